/*
 * Texts and amounts. The window speaks UTF-16, the protocol carries bytes; the shops that this program is sold with
 * send UTF-8. Sizes are in characters and count the ending NUL; what does not fit is cut. Any thread may call.
 */
#ifndef STOREFRONT_TEXT_H
#define STOREFRONT_TEXT_H

#include <windows.h>

/* Copies and cuts. */
void CopyText(wchar_t* target, size_t size, const wchar_t* source);

/* UTF-8 to UTF-16; bytes that are no UTF-8 are taken for the ANSI code page. A null source is an empty text. */
void FromServer(wchar_t* target, size_t size, const char* source);

/* UTF-16 to UTF-8; the size is in bytes. Empty when the text does not fit. */
void ToServer(char* target, size_t size, const wchar_t* source);

/* Reads an amount such as "29.00" into cents. False, and nothing changed, when it is none. */
BOOL ReadCents(const wchar_t* text, long long* cents);

/* Writes cents as "29.00". */
void WriteCents(wchar_t* target, size_t size, long long cents);

/* The path of a file in the program's own folder. False when it does not fit. */
BOOL PathBesideProgram(const wchar_t* name, wchar_t* path, size_t size);

/* Puts `name` in the place of the last part of `path`. False when it does not fit. */
BOOL ReplaceFileName(wchar_t* path, size_t size, const wchar_t* name);

#endif
