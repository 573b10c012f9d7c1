/*
 * What the vendor decides: the shop's name, server and key, and the application that is sold. It comes from
 * storefront.ini beside the program, or from the file that the command line names. Read once at the start; any thread
 * may read it.
 */
#ifndef STOREFRONT_SETTINGS_H
#define STOREFRONT_SETTINGS_H

#include <windows.h>

typedef struct Settings {
  wchar_t title[80];
  wchar_t slogan[120];
  wchar_t currency[8]; /* stands before every amount that is shown */
  char host[256];
  unsigned port;
  char key[4096]; /* the text of the server's public key */
  char guid[80];
  char version[40];
  /* The names under which the server wants these; what has no name is neither asked for nor sent. */
  char holderField[64];
  char expiryField[64];
  char codeField[64];
  char orderField[64]; /* for this program's own number of the sale */
} Settings;

/* False, with a sentence in `fault`, when the file is not there or lacks what a shop cannot do without. */
BOOL ReadSettings(const wchar_t* commandLine, Settings* settings, wchar_t* fault, size_t size);

#endif
