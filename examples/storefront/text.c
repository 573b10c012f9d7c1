#include "text.h"

#include <stdio.h>
#include <wchar.h>

#define MOST_WHOLE_DIGITS 12 /* in cents still far below the end of 64 bits */

void CopyText(wchar_t* target, size_t size, const wchar_t* source) {
  size_t length = wcslen(source);
  if (length >= size) length = size - 1;
  wmemcpy(target, source, length);
  target[length] = L'\0';
}

void FromServer(wchar_t* target, size_t size, const char* source) {
  target[0] = L'\0';
  if (source == NULL) return;
  if (MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, source, -1, target, (int)size) > 0) return;
  /* Either no UTF-8 or too long; a text that was cut has no NUL of its own. */
  if (GetLastError() != ERROR_INSUFFICIENT_BUFFER) MultiByteToWideChar(CP_ACP, 0, source, -1, target, (int)size);
  target[size - 1] = L'\0';
}

void ToServer(char* target, size_t size, const wchar_t* source) {
  if (WideCharToMultiByte(CP_UTF8, 0, source, -1, target, (int)size, NULL, NULL) == 0) target[0] = '\0';
}

static BOOL IsDigit(wchar_t character) {
  return character >= L'0' && character <= L'9';
}

BOOL ReadCents(const wchar_t* text, long long* cents) {
  long long value = 0;
  int digits = 0;
  for (; IsDigit(*text); ++text, ++digits) value = digits < MOST_WHOLE_DIGITS ? value * 10 + (*text - L'0') : value;
  if (digits == 0 || digits > MOST_WHOLE_DIGITS) return FALSE;
  value *= 100;
  if (*text == L'.') {
    if (!IsDigit(text[1]) || !IsDigit(text[2])) return FALSE;
    value += (text[1] - L'0') * 10 + (text[2] - L'0');
    text += 3;
  }
  if (*text != L'\0') return FALSE;
  *cents = value;
  return TRUE;
}

void WriteCents(wchar_t* target, size_t size, long long cents) {
  _snwprintf(target, size, L"%I64d.%02d", cents / 100, (int)(cents % 100));
  target[size - 1] = L'\0';
}

BOOL PathBesideProgram(const wchar_t* name, wchar_t* path, size_t size) {
  const DWORD length = GetModuleFileNameW(NULL, path, (DWORD)size);
  return length > 0 && length < size && ReplaceFileName(path, size, name);
}

BOOL ReplaceFileName(wchar_t* path, size_t size, const wchar_t* name) {
  wchar_t* slash = wcsrchr(path, L'\\');
  const size_t folder = slash == NULL ? 0 : (size_t)(slash - path) + 1;
  if (folder + wcslen(name) >= size) return FALSE;
  wcscpy(path + folder, name);
  return TRUE;
}
