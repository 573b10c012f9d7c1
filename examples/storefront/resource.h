/* The numbers of the window's parts, for the sources, the resources and whoever drives the window in a test. */
#ifndef STOREFRONT_RESOURCE_H
#define STOREFRONT_RESOURCE_H

#define IDD_SHOP 100
#define IDI_SHOP 101
#define IDR_KEYS 102

#define IDC_HEADER 200
#define IDC_PRODUCTS_LABEL 201
#define IDC_PRODUCTS 202
#define IDC_REFRESH 203
#define IDC_MESSAGE 204
#define IDC_PROGRESS 205

#define IDC_ORDER_GROUP 210
#define IDC_CHOICE 211
#define IDC_QUANTITY_LABEL 212
#define IDC_QUANTITY 213
#define IDC_SPIN 214
#define IDC_SUBTOTAL_LABEL 215
#define IDC_SUBTOTAL 216

#define IDC_CARD_GROUP 220
#define IDC_NUMBER_LABEL 221
#define IDC_NUMBER 222
#define IDC_HOLDER_LABEL 223
#define IDC_HOLDER 224
#define IDC_EXPIRY_LABEL 225
#define IDC_EXPIRY 226
#define IDC_CODE_LABEL 227
#define IDC_CODE 228
#define IDC_BUY 229

#define IDC_PAST_LABEL 240
#define IDC_PAST 241
#define IDC_RECEIPT_LABEL 242
#define IDC_RECEIPT 243

#endif
