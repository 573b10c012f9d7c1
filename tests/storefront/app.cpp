#include "app.h"

#include <stdexcept>

#include "input.h"
#include "road/road_test.h"

namespace storefront_test {
namespace {

constexpr UINT frozenMilliseconds = 2000;
constexpr DWORD lookMilliseconds = 20;

struct Search {
  DWORD processId;
  const wchar_t* className;
  HWND found;
};

BOOL CALLBACK LookAt(HWND window, LPARAM parameter) {
  auto* search = reinterpret_cast<Search*>(parameter);
  DWORD processId = 0;
  wchar_t name[64] = L"";
  GetWindowThreadProcessId(window, &processId);
  GetClassNameW(window, name, 64);
  if (processId != search->processId || !IsWindowVisible(window)) return TRUE;
  if (std::wstring(name) != search->className) return TRUE;
  search->found = window;
  return FALSE;
}

HWND FindVisible(DWORD processId, const wchar_t* className) {
  Search search{processId, className, nullptr};
  EnumWindows(LookAt, reinterpret_cast<LPARAM>(&search));
  return search.found;
}

std::wstring FullPath(const std::string& path) {
  wchar_t full[MAX_PATH];
  const DWORD length = GetFullPathNameW(std::wstring(path.begin(), path.end()).c_str(), MAX_PATH, full, nullptr);
  if (length == 0 || length >= MAX_PATH) throw std::runtime_error(path + " is too long");
  return full;
}

}  // namespace

App::App(const std::wstring& settings) {
  const std::wstring program = FullPath(kest_road::Environment("KEST_STOREFRONT"));
  std::wstring command = L"\"" + program + L"\" \"" + settings + L"\"";
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION started{};
  if (!CreateProcessW(program.c_str(), command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                      &started)) {
    throw std::runtime_error("the storefront cannot be started; build the preset win32 first");
  }
  process = started.hProcess;
  processId = started.dwProcessId;
  threadId = started.dwThreadId;
  CloseHandle(started.hThread);
}

App::~App() {
  TerminateProcess(process, 1);
  WaitForSingleObject(process, INFINITE);
  CloseHandle(process);
}

bool App::WaitFor(const std::function<bool()>& condition, unsigned seconds) const {
  const DWORD begin = GetTickCount();
  for (;;) {
    if (condition()) return true;
    if (GetTickCount() - begin > seconds * 1000) return false;
    if (WaitForSingleObject(process, lookMilliseconds) == WAIT_OBJECT_0) return condition();
  }
}

bool App::WaitForWindow() {
  const auto isThere = [this] { return (window = FindVisible(processId, L"Storefront")) != nullptr; };
  if (!WaitFor(isThere)) return false;
  // A box stands before the window and has the focus.
  return WaitFor([this] { return Box() != nullptr || GetForegroundWindow() == window; });
}

DWORD App::ExitCode() const {
  DWORD code = STILL_ACTIVE;
  GetExitCodeProcess(process, &code);
  return code;
}

std::wstring App::TextOf(HWND part) {
  wchar_t text[1024] = L"";
  DWORD_PTR length = 0;
  if (part == nullptr) return {};
  if (!SendMessageTimeoutW(part, WM_GETTEXT, 1024, reinterpret_cast<LPARAM>(text), SMTO_NORMAL, frozenMilliseconds,
                           &length)) {
    throw std::runtime_error("the window is frozen");
  }
  return text;
}

int App::FocusedPart() const {
  GUITHREADINFO info{};
  info.cbSize = sizeof info;
  return GetGUIThreadInfo(threadId, &info) ? GetDlgCtrlID(info.hwndFocus) : 0;
}

void App::ClickMiddleOf(HWND part) const {
  RECT area;
  GetWindowRect(part, &area);
  ClickAt({(area.left + area.right) / 2, (area.top + area.bottom) / 2});
}

void App::Click(int part) const { ClickMiddleOf(Part(part)); }

void App::ClickRow(int list, int row) const { ClickAt(PlaceOfRow(process, Part(list), row)); }

void App::Fill(int field, const std::string& text) const {
  const std::wstring wanted(text.begin(), text.end());
  Click(field);
  if (!WaitFor([this, field] { return FocusedPart() == field; })) throw std::runtime_error("the field got no focus");
  PressKey(VK_HOME);
  PressKey(VK_END, VK_SHIFT);
  Type(text);
  const auto hasText = [this, field, &wanted] { return Text(field) == wanted; };
  if (!WaitFor(hasText)) throw std::runtime_error("the field got no text");
}

HWND App::Box() const { return FindVisible(processId, L"#32770"); }

std::wstring App::BoxText() const {
  const HWND box = Box();
  // The words of a message box have this number.
  return box == nullptr ? std::wstring() : TextOf(GetDlgItem(box, 0xFFFF));
}

void App::AnswerBox(int button) const {
  const HWND box = Box();
  ClickMiddleOf(GetDlgItem(box, button));
  WaitFor([box] { return !IsWindow(box); });
}

}  // namespace storefront_test
