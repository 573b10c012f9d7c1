// KESTAPI for C#, by P/Invoke: KESTAPI.DLL by ordinal, or, without KEST_ORDINALS, the functions of libkestapi.so by name.
// What kestapi.h says of the functions holds here too.
//
// Objects are IntPtr, IntPtr.Zero for null. Texts that the library answers belong to it: an IntPtr, never a string, which
// the runtime would free; see Text. A flag is one byte, not the four of a bool.
using System;
using System.Runtime.InteropServices;

static class Kestapi
{
    public const int ErrorNone = 0;
    public const int ErrorExchange = 102;

    // A copy of a text of the library; empty for null.
    public static string Text(IntPtr text)
    {
        return Marshal.PtrToStringAnsi(text) ?? "";
    }

#if KEST_ORDINALS
    const string Library = "KESTAPI.DLL";
    const string FreeFieldSetEntry = "#100";
    const string CreateFieldSetEntry = "#101";
    const string SetServerEntry = "#102";
    const string GetFieldEntry = "#103";
    const string GetFieldNameEntry = "#104";
    const string GetFieldCountEntry = "#105";
    const string GetFieldValueEntry = "#106";
    const string GetErrorCodeEntry = "#107";
    const string AddFieldEntry = "#108";
    const string SetFieldEntry = "#109";
    const string SetProxyEntry = "#110";
    const string CreateCheckoutEntry = "#500";
    const string DestroyCheckoutEntry = "#501";
    const string ConfigureServerEntry = "#502";
    const string CreatePurchaseEntry = "#504";
    const string DestroyPurchaseEntry = "#505";
    const string CreateProductListEntry = "#506";
    const string DestroyProductListEntry = "#507";
    const string GetBillProductEntry = "#509";
    const string GetBillProductCountEntry = "#510";
    const string SetApplicationGuidEntry = "#512";
    const string AddOrderLineEntry = "#514";
    const string BillCustomerEntry = "#515";
    const string GetBillEntry = "#517";
    const string LoadReceiptEntry = "#523";
    const string GetProductListEntry = "#524";
    const string NextProductEntry = "#525";
    const string ClearOrderEntry = "#526";
#else
    const string Library = "libkestapi.so.0";
    const string FreeFieldSetEntry = "KestFreeFieldSet";
    const string CreateFieldSetEntry = "KestCreateFieldSet";
    const string SetServerEntry = "KestSetServer";
    const string GetFieldEntry = "KestGetField";
    const string GetFieldNameEntry = "KestGetFieldName";
    const string GetFieldCountEntry = "KestGetFieldCount";
    const string GetFieldValueEntry = "KestGetFieldValue";
    const string GetErrorCodeEntry = "KestGetErrorCode";
    const string AddFieldEntry = "KestAddField";
    const string SetFieldEntry = "KestSetField";
    const string SetProxyEntry = "KestSetProxy";
    const string CreateCheckoutEntry = "KestCreateCheckout";
    const string DestroyCheckoutEntry = "KestDestroyCheckout";
    const string ConfigureServerEntry = "KestConfigureServer";
    const string CreatePurchaseEntry = "KestCreatePurchase";
    const string DestroyPurchaseEntry = "KestDestroyPurchase";
    const string CreateProductListEntry = "KestCreateProductList";
    const string DestroyProductListEntry = "KestDestroyProductList";
    const string GetBillProductEntry = "KestGetBillProduct";
    const string GetBillProductCountEntry = "KestGetBillProductCount";
    const string SetApplicationGuidEntry = "KestSetApplicationGuid";
    const string AddOrderLineEntry = "KestAddOrderLine";
    const string BillCustomerEntry = "KestBillCustomer";
    const string GetBillEntry = "KestGetBill";
    const string LoadReceiptEntry = "KestLoadReceipt";
    const string GetProductListEntry = "KestGetProductList";
    const string NextProductEntry = "KestNextProduct";
    const string ClearOrderEntry = "KestClearOrder";
#endif

    [DllImport(Library, EntryPoint = FreeFieldSetEntry, CharSet = CharSet.Ansi, ExactSpelling = true)]
    public static extern void KestFreeFieldSet(IntPtr set);

    [DllImport(Library, EntryPoint = CreateFieldSetEntry, CharSet = CharSet.Ansi, ExactSpelling = true)]
    public static extern IntPtr KestCreateFieldSet();

    [DllImport(Library, EntryPoint = SetServerEntry, CharSet = CharSet.Ansi, ExactSpelling = true)]
    public static extern byte KestSetServer(string host, uint port, string key);

    [DllImport(Library, EntryPoint = GetFieldEntry, CharSet = CharSet.Ansi, ExactSpelling = true)]
    public static extern IntPtr KestGetField(IntPtr set, string name);

    [DllImport(Library, EntryPoint = GetFieldNameEntry, CharSet = CharSet.Ansi, ExactSpelling = true)]
    public static extern IntPtr KestGetFieldName(IntPtr set, int index);

    [DllImport(Library, EntryPoint = GetFieldCountEntry, CharSet = CharSet.Ansi, ExactSpelling = true)]
    public static extern int KestGetFieldCount(IntPtr set);

    [DllImport(Library, EntryPoint = GetFieldValueEntry, CharSet = CharSet.Ansi, ExactSpelling = true)]
    public static extern IntPtr KestGetFieldValue(IntPtr set, int index);

    [DllImport(Library, EntryPoint = GetErrorCodeEntry, CharSet = CharSet.Ansi, ExactSpelling = true)]
    public static extern int KestGetErrorCode(IntPtr set);

    [DllImport(Library, EntryPoint = AddFieldEntry, CharSet = CharSet.Ansi, ExactSpelling = true)]
    public static extern void KestAddField(IntPtr set, string name, string value);

    [DllImport(Library, EntryPoint = SetFieldEntry, CharSet = CharSet.Ansi, ExactSpelling = true)]
    public static extern void KestSetField(IntPtr set, string name, string value);

    [DllImport(Library, EntryPoint = SetProxyEntry, CharSet = CharSet.Ansi, ExactSpelling = true)]
    public static extern void KestSetProxy(string host, uint port);

    [DllImport(Library, EntryPoint = CreateCheckoutEntry, CharSet = CharSet.Ansi, ExactSpelling = true)]
    public static extern IntPtr KestCreateCheckout();

    [DllImport(Library, EntryPoint = DestroyCheckoutEntry, CharSet = CharSet.Ansi, ExactSpelling = true)]
    public static extern void KestDestroyCheckout(IntPtr checkout);

    [DllImport(Library, EntryPoint = ConfigureServerEntry, CharSet = CharSet.Ansi, ExactSpelling = true)]
    public static extern byte KestConfigureServer(IntPtr configuration);

    [DllImport(Library, EntryPoint = CreatePurchaseEntry, CharSet = CharSet.Ansi, ExactSpelling = true)]
    public static extern IntPtr KestCreatePurchase();

    [DllImport(Library, EntryPoint = DestroyPurchaseEntry, CharSet = CharSet.Ansi, ExactSpelling = true)]
    public static extern void KestDestroyPurchase(IntPtr purchase);

    [DllImport(Library, EntryPoint = CreateProductListEntry, CharSet = CharSet.Ansi, ExactSpelling = true)]
    public static extern IntPtr KestCreateProductList();

    [DllImport(Library, EntryPoint = DestroyProductListEntry, CharSet = CharSet.Ansi, ExactSpelling = true)]
    public static extern void KestDestroyProductList(IntPtr list);

    [DllImport(Library, EntryPoint = GetBillProductEntry, CharSet = CharSet.Ansi, ExactSpelling = true)]
    public static extern IntPtr KestGetBillProduct(IntPtr bill, uint index);

    [DllImport(Library, EntryPoint = GetBillProductCountEntry, CharSet = CharSet.Ansi, ExactSpelling = true)]
    public static extern int KestGetBillProductCount(IntPtr bill);

    [DllImport(Library, EntryPoint = SetApplicationGuidEntry, CharSet = CharSet.Ansi, ExactSpelling = true)]
    public static extern void KestSetApplicationGuid(string guid);

    [DllImport(Library, EntryPoint = AddOrderLineEntry, CharSet = CharSet.Ansi, ExactSpelling = true)]
    public static extern void KestAddOrderLine(IntPtr checkout, uint sku, uint quantity);

    [DllImport(Library, EntryPoint = BillCustomerEntry, CharSet = CharSet.Ansi, ExactSpelling = true)]
    public static extern IntPtr KestBillCustomer(IntPtr checkout);

    [DllImport(Library, EntryPoint = GetBillEntry, CharSet = CharSet.Ansi, ExactSpelling = true)]
    public static extern IntPtr KestGetBill(IntPtr checkout);

    [DllImport(Library, EntryPoint = LoadReceiptEntry, CharSet = CharSet.Ansi, ExactSpelling = true)]
    public static extern byte KestLoadReceipt(IntPtr target, string guid);

    [DllImport(Library, EntryPoint = GetProductListEntry, CharSet = CharSet.Ansi, ExactSpelling = true)]
    public static extern byte KestGetProductList(IntPtr list, string versionId);

    [DllImport(Library, EntryPoint = NextProductEntry, CharSet = CharSet.Ansi, ExactSpelling = true)]
    public static extern IntPtr KestNextProduct(IntPtr list);

    [DllImport(Library, EntryPoint = ClearOrderEntry, CharSet = CharSet.Ansi, ExactSpelling = true)]
    public static extern void KestClearOrder(IntPtr checkout);
}
