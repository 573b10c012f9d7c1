#include "settings.h"

#include <stdio.h>
#include <string.h>

#include <shellapi.h>

#include "text.h"

static void ReadAnsi(const wchar_t* path, const wchar_t* section, const wchar_t* name, char* target, size_t size) {
  wchar_t text[512];
  GetPrivateProfileStringW(section, name, L"", text, sizeof text / sizeof text[0], path);
  ToServer(target, size, text);
}

/* The file that the command line names, else the one beside the program. */
static BOOL FindFile(const wchar_t* commandLine, wchar_t* path, size_t size) {
  int count = 0;
  /* An empty command line would be answered with the program's own path. */
  wchar_t** arguments = commandLine[0] == L'\0' ? NULL : CommandLineToArgvW(commandLine, &count);
  DWORD length = 0;
  if (arguments != NULL && count > 0) length = GetFullPathNameW(arguments[0], (DWORD)size, path, NULL);
  LocalFree(arguments);
  if (length > 0) return length < size;
  return PathBesideProgram(L"storefront.ini", path, size);
}

/* The key is the whole text of a file, which `path` leads to. */
static BOOL ReadKey(const wchar_t* path, char* key, size_t size) {
  DWORD length = 0;
  const HANDLE file = CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, NULL, OPEN_EXISTING, 0, NULL);
  if (file == INVALID_HANDLE_VALUE) return FALSE;
  if (!ReadFile(file, key, (DWORD)size - 1, &length, NULL)) length = 0;
  CloseHandle(file);
  key[length] = '\0';
  return length > 0;
}

/* A relative name of the key's file counts from the folder of the settings. */
static BOOL FindKey(const wchar_t* settingsPath, wchar_t* path, size_t size) {
  wchar_t name[MAX_PATH];
  GetPrivateProfileStringW(L"Server", L"KeyFile", L"public.key", name, MAX_PATH, settingsPath);
  CopyText(path, size, settingsPath);
  if (name[0] != L'\\' && name[0] != L'/' && name[1] != L':') return ReplaceFileName(path, size, name);
  CopyText(path, size, name);
  return TRUE;
}

static void ReadTexts(const wchar_t* path, Settings* settings) {
  GetPrivateProfileStringW(L"Shop", L"Title", L"Shop", settings->title, 80, path);
  GetPrivateProfileStringW(L"Shop", L"Slogan", L"", settings->slogan, 120, path);
  GetPrivateProfileStringW(L"Shop", L"Currency", L"", settings->currency, 8, path);
  ReadAnsi(path, L"Server", L"Host", settings->host, sizeof settings->host);
  settings->port = GetPrivateProfileIntW(L"Server", L"Port", 80, path);
  ReadAnsi(path, L"Application", L"GUID", settings->guid, sizeof settings->guid);
  ReadAnsi(path, L"Application", L"Version", settings->version, sizeof settings->version);
  ReadAnsi(path, L"CardFields", L"Holder", settings->holderField, sizeof settings->holderField);
  ReadAnsi(path, L"CardFields", L"Expiry", settings->expiryField, sizeof settings->expiryField);
  ReadAnsi(path, L"CardFields", L"Code", settings->codeField, sizeof settings->codeField);
  ReadAnsi(path, L"Application", L"OrderField", settings->orderField, sizeof settings->orderField);
}

BOOL ReadSettings(const wchar_t* commandLine, Settings* settings, wchar_t* fault, size_t size) {
  wchar_t path[MAX_PATH] = L"", keyPath[MAX_PATH];
  const wchar_t* wrong = NULL;
  memset(settings, 0, sizeof *settings);
  fault[0] = L'\0';
  if (!FindFile(commandLine, path, MAX_PATH) || GetFileAttributesW(path) == INVALID_FILE_ATTRIBUTES) {
    wrong = L"The shop's settings are missing.";
  } else {
    ReadTexts(path, settings);
    if (settings->host[0] == '\0') wrong = L"The settings name no server (Host in the section Server).";
    else if (settings->guid[0] == '\0') wrong = L"The settings name no application (GUID in the section Application).";
    else if (!FindKey(path, keyPath, MAX_PATH) || !ReadKey(keyPath, settings->key, sizeof settings->key))
      wrong = L"The key of the shop's server cannot be read (KeyFile in the section Server).";
  }
  if (wrong == NULL) return TRUE;
  _snwprintf(fault, size, L"%ls\n\n%ls", wrong, path);
  fault[size - 1] = L'\0';
  return FALSE;
}
