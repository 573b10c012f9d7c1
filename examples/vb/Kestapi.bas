Attribute VB_Name = "Kestapi"
' KESTAPI for Visual Basic 6 and 32-bit VBA: KESTAPI.DLL by ordinal. What kestapi.h says of the functions holds here too.
'
' NOT RUN by the tests of this project, which have no Visual Basic: they hold every ordinal, the number of arguments and
' their kinds to the library's list of exports.
'
' Objects are Long, 0 for null. Texts that are passed in are String, which Visual Basic converts to ANSI by itself. Texts
' that the library answers belong to it: a Long, from which KestText makes a copy. A flag is a Byte, 1 or 0. Numbers are
' unsigned in the library: pass &HFFFFFFFF as -1.
Option Explicit

Public Const KEST_ERROR_NONE As Long = 0
Public Const KEST_ERROR_EXCHANGE As Long = 102

Public Declare Sub KestFreeFieldSet Lib "KESTAPI.DLL" Alias "#100" _
    (ByVal fields As Long)
Public Declare Function KestCreateFieldSet Lib "KESTAPI.DLL" Alias "#101" _
    () As Long
Public Declare Function KestSetServer Lib "KESTAPI.DLL" Alias "#102" _
    (ByVal host As String, ByVal port As Long, ByVal keyText As String) As Byte
Public Declare Function KestGetField Lib "KESTAPI.DLL" Alias "#103" _
    (ByVal fields As Long, ByVal fieldName As String) As Long
Public Declare Function KestGetFieldName Lib "KESTAPI.DLL" Alias "#104" _
    (ByVal fields As Long, ByVal index As Long) As Long
Public Declare Function KestGetFieldCount Lib "KESTAPI.DLL" Alias "#105" _
    (ByVal fields As Long) As Long
Public Declare Function KestGetFieldValue Lib "KESTAPI.DLL" Alias "#106" _
    (ByVal fields As Long, ByVal index As Long) As Long
Public Declare Function KestGetErrorCode Lib "KESTAPI.DLL" Alias "#107" _
    (ByVal fields As Long) As Long
Public Declare Sub KestAddField Lib "KESTAPI.DLL" Alias "#108" _
    (ByVal fields As Long, ByVal fieldName As String, ByVal value As String)
Public Declare Sub KestSetField Lib "KESTAPI.DLL" Alias "#109" _
    (ByVal fields As Long, ByVal fieldName As String, ByVal value As String)
Public Declare Sub KestSetProxy Lib "KESTAPI.DLL" Alias "#110" _
    (ByVal host As String, ByVal port As Long)
Public Declare Function KestCreateCheckout Lib "KESTAPI.DLL" Alias "#500" _
    () As Long
Public Declare Sub KestDestroyCheckout Lib "KESTAPI.DLL" Alias "#501" _
    (ByVal checkout As Long)
Public Declare Function KestConfigureServer Lib "KESTAPI.DLL" Alias "#502" _
    (ByVal configuration As Long) As Byte
Public Declare Function KestCreatePurchase Lib "KESTAPI.DLL" Alias "#504" _
    () As Long
Public Declare Sub KestDestroyPurchase Lib "KESTAPI.DLL" Alias "#505" _
    (ByVal purchase As Long)
Public Declare Function KestCreateProductList Lib "KESTAPI.DLL" Alias "#506" _
    () As Long
Public Declare Sub KestDestroyProductList Lib "KESTAPI.DLL" Alias "#507" _
    (ByVal list As Long)
Public Declare Function KestGetBillProduct Lib "KESTAPI.DLL" Alias "#509" _
    (ByVal bill As Long, ByVal index As Long) As Long
Public Declare Function KestGetBillProductCount Lib "KESTAPI.DLL" Alias "#510" _
    (ByVal bill As Long) As Long
Public Declare Sub KestSetApplicationGuid Lib "KESTAPI.DLL" Alias "#512" _
    (ByVal guid As String)
Public Declare Sub KestAddOrderLine Lib "KESTAPI.DLL" Alias "#514" _
    (ByVal checkout As Long, ByVal sku As Long, ByVal quantity As Long)
Public Declare Function KestBillCustomer Lib "KESTAPI.DLL" Alias "#515" _
    (ByVal checkout As Long) As Long
Public Declare Function KestGetBill Lib "KESTAPI.DLL" Alias "#517" _
    (ByVal checkout As Long) As Long
Public Declare Function KestLoadReceipt Lib "KESTAPI.DLL" Alias "#523" _
    (ByVal target As Long, ByVal guid As String) As Byte
Public Declare Function KestGetProductList Lib "KESTAPI.DLL" Alias "#524" _
    (ByVal list As Long, ByVal versionId As String) As Byte
Public Declare Function KestNextProduct Lib "KESTAPI.DLL" Alias "#525" _
    (ByVal list As Long) As Long
Public Declare Sub KestClearOrder Lib "KESTAPI.DLL" Alias "#526" _
    (ByVal checkout As Long)

Private Declare Function TextLength Lib "kernel32" Alias "lstrlenA" (ByVal address As Long) As Long
Private Declare Sub CopyBytes Lib "kernel32" Alias "RtlMoveMemory" _
    (ByRef target As Byte, ByVal source As Long, ByVal count As Long)

' A copy of a text of the library; empty for null.
Public Function KestText(ByVal address As Long) As String
    Dim length As Long
    Dim bytes() As Byte
    If address = 0 Then Exit Function
    length = TextLength(address)
    If length = 0 Then Exit Function
    ReDim bytes(0 To length - 1)
    CopyBytes bytes(0), address, length
    KestText = StrConv(bytes, vbUnicode)
End Function
