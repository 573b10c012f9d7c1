{ KESTAPI for Free Pascal: KESTAPI.DLL by ordinal on Windows, the functions of libkestapi.so by name elsewhere. What
  kestapi.h says of the functions holds here too.

  Objects are pointers, nil for null. Texts that the library answers belong to it: copy them into a string. A flag is
  one byte, 1 or 0. }
unit kestapi;

{$mode objfpc}{$H+}{$macro on}

{$ifdef windows}
  {$define KestCall := stdcall}
{$else}
  {$define KestCall := cdecl}
{$endif}

interface

const
  KestLibrary = {$ifdef windows}'KESTAPI.DLL'{$else}'kestapi'{$endif};
  KestErrorNone = 0;
  KestErrorExchange = 102;

procedure KestFreeFieldSet(fields: Pointer); KestCall;
  external KestLibrary {$ifdef windows}index 100{$else}name 'KestFreeFieldSet'{$endif};
function KestCreateFieldSet: Pointer; KestCall;
  external KestLibrary {$ifdef windows}index 101{$else}name 'KestCreateFieldSet'{$endif};
function KestSetServer(host: PAnsiChar; port: LongWord; key: PAnsiChar): Byte; KestCall;
  external KestLibrary {$ifdef windows}index 102{$else}name 'KestSetServer'{$endif};
function KestGetField(fields: Pointer; name: PAnsiChar): PAnsiChar; KestCall;
  external KestLibrary {$ifdef windows}index 103{$else}name 'KestGetField'{$endif};
function KestGetFieldName(fields: Pointer; index: LongInt): PAnsiChar; KestCall;
  external KestLibrary {$ifdef windows}index 104{$else}name 'KestGetFieldName'{$endif};
function KestGetFieldCount(fields: Pointer): LongInt; KestCall;
  external KestLibrary {$ifdef windows}index 105{$else}name 'KestGetFieldCount'{$endif};
function KestGetFieldValue(fields: Pointer; index: LongInt): PAnsiChar; KestCall;
  external KestLibrary {$ifdef windows}index 106{$else}name 'KestGetFieldValue'{$endif};
function KestGetErrorCode(fields: Pointer): LongInt; KestCall;
  external KestLibrary {$ifdef windows}index 107{$else}name 'KestGetErrorCode'{$endif};
procedure KestAddField(fields: Pointer; name: PAnsiChar; value: PAnsiChar); KestCall;
  external KestLibrary {$ifdef windows}index 108{$else}name 'KestAddField'{$endif};
procedure KestSetField(fields: Pointer; name: PAnsiChar; value: PAnsiChar); KestCall;
  external KestLibrary {$ifdef windows}index 109{$else}name 'KestSetField'{$endif};
procedure KestSetProxy(host: PAnsiChar; port: LongWord); KestCall;
  external KestLibrary {$ifdef windows}index 110{$else}name 'KestSetProxy'{$endif};
function KestCreateCheckout: Pointer; KestCall;
  external KestLibrary {$ifdef windows}index 500{$else}name 'KestCreateCheckout'{$endif};
procedure KestDestroyCheckout(checkout: Pointer); KestCall;
  external KestLibrary {$ifdef windows}index 501{$else}name 'KestDestroyCheckout'{$endif};
function KestConfigureServer(configuration: Pointer): Byte; KestCall;
  external KestLibrary {$ifdef windows}index 502{$else}name 'KestConfigureServer'{$endif};
function KestCreatePurchase: Pointer; KestCall;
  external KestLibrary {$ifdef windows}index 504{$else}name 'KestCreatePurchase'{$endif};
procedure KestDestroyPurchase(purchase: Pointer); KestCall;
  external KestLibrary {$ifdef windows}index 505{$else}name 'KestDestroyPurchase'{$endif};
function KestCreateProductList: Pointer; KestCall;
  external KestLibrary {$ifdef windows}index 506{$else}name 'KestCreateProductList'{$endif};
procedure KestDestroyProductList(list: Pointer); KestCall;
  external KestLibrary {$ifdef windows}index 507{$else}name 'KestDestroyProductList'{$endif};
function KestGetBillProduct(bill: Pointer; index: LongWord): Pointer; KestCall;
  external KestLibrary {$ifdef windows}index 509{$else}name 'KestGetBillProduct'{$endif};
function KestGetBillProductCount(bill: Pointer): LongInt; KestCall;
  external KestLibrary {$ifdef windows}index 510{$else}name 'KestGetBillProductCount'{$endif};
procedure KestSetApplicationGuid(guid: PAnsiChar); KestCall;
  external KestLibrary {$ifdef windows}index 512{$else}name 'KestSetApplicationGuid'{$endif};
procedure KestAddOrderLine(checkout: Pointer; sku: LongWord; quantity: LongWord); KestCall;
  external KestLibrary {$ifdef windows}index 514{$else}name 'KestAddOrderLine'{$endif};
function KestBillCustomer(checkout: Pointer): Pointer; KestCall;
  external KestLibrary {$ifdef windows}index 515{$else}name 'KestBillCustomer'{$endif};
function KestGetBill(checkout: Pointer): Pointer; KestCall;
  external KestLibrary {$ifdef windows}index 517{$else}name 'KestGetBill'{$endif};
function KestLoadReceipt(target: Pointer; guid: PAnsiChar): Byte; KestCall;
  external KestLibrary {$ifdef windows}index 523{$else}name 'KestLoadReceipt'{$endif};
function KestGetProductList(list: Pointer; versionId: PAnsiChar): Byte; KestCall;
  external KestLibrary {$ifdef windows}index 524{$else}name 'KestGetProductList'{$endif};
function KestNextProduct(list: Pointer): Pointer; KestCall;
  external KestLibrary {$ifdef windows}index 525{$else}name 'KestNextProduct'{$endif};
procedure KestClearOrder(checkout: Pointer); KestCall;
  external KestLibrary {$ifdef windows}index 526{$else}name 'KestClearOrder'{$endif};

implementation

end.
