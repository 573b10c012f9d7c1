/*
 * Sells one product from the command line: a whole host in C, linked against the library.
 *
 * usage: sell SKU <CARD    the card number is the first line of the input, so that it stands in no list of processes
 * KEST_SERVER, KEST_PORT, KEST_KEY_FILE (a file with the server's public key) and KEST_GUID are in the environment.
 * exit: 0 sold; 1 nothing was sold: this machine's fault, or no server answered; 2 usage; 3 nobody knows whether the
 * card was charged; 4 the server refused, nothing was sold.
 */
#include <kestapi.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum Outcome { sold = 0, notSold = 1, wrongUsage = 2, unknownOutcome = 3, refused = 4 };

typedef struct Settings {
  const char* server;
  const char* guid;
  const char* keyFile;
  uint32_t port;
  uint32_t sku;
} Settings;

/* Reads the first line of a file without its end; 0 when there is none or it does not fit. */
static int ReadLine(FILE* file, char* line, int size) {
  if (fgets(line, size, file) == NULL) return 0;
  const size_t length = strcspn(line, "\r\n");
  if (line[length] == '\0' && !feof(file)) return 0;
  line[length] = '\0';
  return length > 0;
}

static const char* OrEmpty(const char* text) {
  return text != NULL ? text : "";
}

static const char* Field(void* object, const char* name) {
  return OrEmpty(KestGetField(KEST_FIELDS(object), name));
}

/* Reads a whole number of digits alone, up to `most`; 0 when the text is none. What is not understood is not sold. */
static int ReadNumber(const char* text, uint32_t most, uint32_t* number) {
  uint64_t value = 0;
  for (const char* next = text; *next != '\0'; ++next) {
    if (*next < '0' || *next > '9') return 0;
    value = 10 * value + (uint64_t)(*next - '0');
    if (value > most) return 0;
  }
  *number = (uint32_t)value;
  return text[0] != '\0';
}

static int ReadSettings(int count, char** arguments, Settings* settings) {
  const char* port = getenv("KEST_PORT");
  settings->server = getenv("KEST_SERVER");
  settings->guid = getenv("KEST_GUID");
  settings->keyFile = getenv("KEST_KEY_FILE");
  if (count != 2 || settings->server == NULL || port == NULL || settings->guid == NULL || settings->keyFile == NULL ||
      !ReadNumber(port, 65535, &settings->port) || !ReadNumber(arguments[1], UINT32_MAX, &settings->sku)) {
    fprintf(stderr, "usage: sell SKU <CARD, with KEST_SERVER, KEST_PORT, KEST_KEY_FILE and KEST_GUID set\n");
    return 0;
  }
  return 1;
}

/* Says once for the whole process which server sells, and for which application. */
static int Configure(const Settings* settings) {
  char key[4096];
  FILE* file = fopen(settings->keyFile, "r");
  const int isRead = file != NULL && ReadLine(file, key, sizeof key);
  if (file != NULL) fclose(file);
  if (!isRead || !KestSetServer(settings->server, settings->port, key)) {
    fprintf(stderr, "%s holds no public key of a server.\n", settings->keyFile);
    return 0;
  }
  KestSetApplicationGuid(settings->guid);
  return 1;
}

static enum Outcome PrintProducts(KestProductList* list) {
  if (!KestGetProductList(list, "1.0")) {
    fprintf(stderr, "No valid answer from the server (error 102). Nothing was charged: check server, port and key.\n");
    return notSold;
  }
  /* A refusal does not make the call fail: it is a field of the list. */
  const char* error = Field(list, "KEST-Error");
  if (strcmp(error, "") != 0 && strcmp(error, "0") != 0) {
    fprintf(stderr, "The server refused the product list (error %s). Nothing was charged.\n", error);
    return refused;
  }
  for (KestFieldSet* product; (product = KestNextProduct(list)) != NULL;) {
    printf("%-6s %-24s %s\n", Field(product, "SKU"), Field(product, "Name"), Field(product, "Price"));
  }
  /* What cannot be written now could not be told after the sale either. */
  if (fflush(stdout) != 0) {
    fprintf(stderr, "The output cannot be written. Nothing was charged.\n");
    return notSold;
  }
  return sold;
}

/* The codes are the server's own: these are the sandbox's. */
static const char* Meaning(int32_t code) {
  switch (code) {
    case 1403: return "the card was declined";
    case 1404: return "the card has insufficient funds";
    case 1405: return "the card has expired";
    default: return "see the server's list of errors";
  }
}

static enum Outcome ExplainFailure(int32_t code) {
  if (code == KEST_ERROR_NONE) {
    fprintf(stderr, "Nothing was sent and nothing charged: memory ran out.\n");
    return notSold;
  }
  if (code == KEST_ERROR_EXCHANGE) {
    fprintf(stderr, "No valid answer to the sale (error 102): the card may have been charged.\n"
                    "Do not just repeat it; ask the seller first whether there is such a sale.\n");
    return unknownOutcome;
  }
  fprintf(stderr, "The server refused the sale (error %d): %s. Nothing was charged.\n", (int)code, Meaning(code));
  return refused;
}

static enum Outcome Sell(KestCheckout* checkout, uint32_t sku, const char* card) {
  KestSetField(KEST_FIELDS(checkout), "KEST-CCard-Number", card);
  KestAddOrderLine(checkout, sku, 1);
  KestPurchase* purchase = KestBillCustomer(checkout);
  if (purchase == NULL) return ExplainFailure(KestGetErrorCode(KEST_FIELDS(checkout)));
  printf("Charged %s, of which %s is tax.\n", Field(purchase, "KEST-TotalAmount"), Field(purchase, "KEST-TaxAmount"));
  printf("Transaction %s\n", Field(purchase, "KEST-TxN"));
  /* It is a sale, whatever becomes of the output. */
  if (fflush(stdout) != 0) fprintf(stderr, "Charged. Transaction %s\n", Field(purchase, "KEST-TxN"));
  return sold;
}

int main(int count, char** arguments) {
  Settings settings;
  char card[64];
#ifdef SIGPIPE
  /* A reader that has left must not end the program in the midst of a sale. */
  signal(SIGPIPE, SIG_IGN);
#endif
  if (!ReadSettings(count, arguments, &settings)) return wrongUsage;
  if (!ReadLine(stdin, card, sizeof card)) {
    fprintf(stderr, "The first line of the input is to be a card number.\n");
    return wrongUsage;
  }
  if (!Configure(&settings)) return notSold;

  KestProductList* list = KestCreateProductList();
  KestCheckout* checkout = KestCreateCheckout();
  enum Outcome outcome = notSold;
  if (list == NULL || checkout == NULL) {
    fprintf(stderr, "Nothing was sent and nothing charged: memory ran out.\n");
  } else {
    outcome = PrintProducts(list);
    if (outcome == sold) outcome = Sell(checkout, settings.sku, card);
  }
  KestDestroyCheckout(checkout);
  KestDestroyProductList(list);
  return (int)outcome;
}
