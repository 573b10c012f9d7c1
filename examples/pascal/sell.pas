{ Sells one product from the command line: a whole host in Free Pascal.

  usage: sell SKU <CARD    the card number is the first line of the input, so that it stands in no list of processes
  KEST_SERVER, KEST_PORT, KEST_KEY_FILE (a file with the server's public key) and KEST_GUID are in the environment.
  exit: 0 sold; 1 nothing was sold: this machine's fault, or no server answered; 2 usage; 3 nobody knows whether the card
  was charged; 4 the server refused, nothing was sold. }
program sell;

{$mode objfpc}{$H+}

uses
  {$ifdef unix} BaseUnix, {$endif} SysUtils, Math, kestapi;

const
  Sold = 0;
  NotSold = 1;
  WrongUsage = 2;
  UnknownOutcome = 3;
  Refused = 4;

type
  { Why nothing is known to be sold, in words for the customer. }
  EFailure = class(Exception)
    Outcome: Integer;
    constructor Create(AnOutcome: Integer; const Words: string);
  end;

constructor EFailure.Create(AnOutcome: Integer; const Words: string);
begin
  inherited Create(Words);
  Outcome := AnOutcome;
end;

function UsageFailure: EFailure;
begin
  Result := EFailure.Create(WrongUsage,
    'usage: sell SKU <CARD, with KEST_SERVER, KEST_PORT, KEST_KEY_FILE and KEST_GUID set');
end;

function Environment(const Name: string): string;
begin
  Result := GetEnvironmentVariable(Name);
  if Result = '' then raise UsageFailure;
end;

function Field(Thing: Pointer; const Name: string): string;
begin
  Result := string(KestGetField(Thing, PAnsiChar(Name)));
end;

function FirstLine(const Path: string): string;
var
  Lines: TextFile;
begin
  Result := '';
  AssignFile(Lines, Path);
  Reset(Lines);
  try
    ReadLn(Lines, Result);
  finally
    CloseFile(Lines);
  end;
end;

{ A whole number of digits alone, up to Most: what is not understood is not sold. }
function Number(const Text: string; Most: LongWord): LongWord;
var
  Value: QWord;
  I: Integer;
begin
  Value := 0;
  if Text = '' then raise UsageFailure;
  for I := 1 to Length(Text) do
  begin
    if not (Text[I] in ['0'..'9']) then raise UsageFailure;
    Value := 10 * Value + QWord(Ord(Text[I]) - Ord('0'));
    if Value > Most then raise UsageFailure;
  end;
  Result := LongWord(Value);
end;

{ Says once for the whole process which server sells, and for which application. }
procedure Configure;
var
  Server, Port, KeyFile, Guid, Key: string;
begin
  Server := Environment('KEST_SERVER');
  Port := Environment('KEST_PORT');
  KeyFile := Environment('KEST_KEY_FILE');
  Guid := Environment('KEST_GUID');
  Key := Trim(FirstLine(KeyFile));
  if (Key = '') or (KestSetServer(PAnsiChar(Server), Number(Port, 65535), PAnsiChar(Key)) = 0) then
    raise EFailure.Create(NotSold, KeyFile + ' holds no public key of a server.');
  KestSetApplicationGuid(PAnsiChar(Guid));
end;

function OutOfMemory: EFailure;
begin
  Result := EFailure.Create(NotSold, 'Nothing was sent and nothing charged: memory ran out.');
end;

procedure PrintProducts;
var
  List, Product: Pointer;
  Error: string;
begin
  List := KestCreateProductList;
  if List = nil then raise OutOfMemory;
  try
    if KestGetProductList(List, '1.0') = 0 then
      raise EFailure.Create(NotSold,
        'No valid answer from the server (error 102). Nothing was charged: check server, port and key.');
    { A refusal does not make the call fail: it is a field of the list. }
    Error := Field(List, 'KEST-Error');
    if (Error <> '') and (Error <> '0') then
      raise EFailure.Create(Refused, 'The server refused the product list (error ' + Error + '). Nothing was charged.');
    Product := KestNextProduct(List);
    while Product <> nil do
    begin
      WriteLn(Format('%-6s %-24s %s', [Field(Product, 'SKU'), Field(Product, 'Name'), Field(Product, 'Price')]));
      Product := KestNextProduct(List);
    end;
    { What cannot be written now could not be told after the sale either. }
    Flush(Output);
  finally
    KestDestroyProductList(List);
  end;
end;

{ The codes are the server's own: these are the sandbox's. }
function Meaning(Code: LongInt): string;
begin
  case Code of
    1403: Result := 'the card was declined';
    1404: Result := 'the card has insufficient funds';
    1405: Result := 'the card has expired';
  else
    Result := 'see the server''s list of errors';
  end;
end;

function SaleFailure(Code: LongInt): EFailure;
begin
  if Code = KestErrorNone then Exit(OutOfMemory);
  if Code = KestErrorExchange then
    Exit(EFailure.Create(UnknownOutcome,
      'No valid answer to the sale (error 102): the card may have been charged.' + LineEnding +
      'Do not just repeat it; ask the seller first whether there is such a sale.'));
  Result := EFailure.Create(Refused, Format('The server refused the sale (error %d): %s. Nothing was charged.',
    [Code, Meaning(Code)]));
end;

procedure SellOne(Sku: LongWord; const Card: string);
var
  Checkout, Purchase: Pointer;
begin
  Checkout := KestCreateCheckout;
  if Checkout = nil then raise OutOfMemory;
  try
    KestSetField(Checkout, 'KEST-CCard-Number', PAnsiChar(Card));
    KestAddOrderLine(Checkout, Sku, 1);
    Purchase := KestBillCustomer(Checkout);
    if Purchase = nil then raise SaleFailure(KestGetErrorCode(Checkout));
    { It is a sale, whatever becomes of the output. }
    try
      WriteLn('Charged ', Field(Purchase, 'KEST-TotalAmount'), ', of which ', Field(Purchase, 'KEST-TaxAmount'),
        ' is tax.');
      WriteLn('Transaction ', Field(Purchase, 'KEST-TxN'));
      Flush(Output);
    except
      on EInOutError do WriteLn(StdErr, 'Charged. Transaction ', Field(Purchase, 'KEST-TxN'));
    end;
  finally
    KestDestroyCheckout(Checkout);
  end;
end;

procedure Run;
var
  Card: string;
  Sku: LongWord;
begin
  if ParamCount <> 1 then raise UsageFailure;
  Sku := Number(ParamStr(1), High(LongWord));
  Configure;
  ReadLn(Card);
  Card := Trim(Card);
  if Card = '' then raise EFailure.Create(WrongUsage, 'The first line of the input is to be a card number.');
  PrintProducts;
  SellOne(Sku, Card);
end;

begin
  { Free Pascal lets arithmetic raise exceptions, which code in other languages is not written for. }
  SetExceptionMask([exInvalidOp, exDenormalized, exZeroDivide, exOverflow, exUnderflow, exPrecision]);
  {$ifdef unix}
  { A reader that has left must not end the program in the midst of a sale. }
  FpSignal(SIGPIPE, SignalHandler(SIG_IGN));
  {$endif}
  ExitCode := Sold;
  try
    Run;
  except
    on Failure: EFailure do
    begin
      WriteLn(StdErr, Failure.Message);
      ExitCode := Failure.Outcome;
    end;
    on Error: EInOutError do
    begin
      WriteLn(StdErr, Error.Message);
      ExitCode := NotSold;
    end;
  end;
end.
