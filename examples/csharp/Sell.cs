// Sells one product from the command line: a whole host in C#.
//
// usage: sell.exe SKU <CARD    the card number is the first line of the input, so that it stands in no list of processes
// KEST_SERVER, KEST_PORT, KEST_KEY_FILE (a file with the server's public key) and KEST_GUID are in the environment.
// exit: 0 sold; 1 nothing was sold: this machine's fault, or no server answered; 2 usage; 3 nobody knows whether the
// card was charged; 4 the server refused, nothing was sold.
using System;
using System.Globalization;
using System.IO;

enum Outcome { Sold = 0, NotSold = 1, WrongUsage = 2, Unknown = 3, Refused = 4 }

class Failure : Exception
{
    public readonly Outcome Outcome;

    public Failure(Outcome outcome, string words) : base(words)
    {
        Outcome = outcome;
    }
}

static class Sell
{
    static string Environment(string name)
    {
        string value = System.Environment.GetEnvironmentVariable(name);
        if (value == null) throw UsageFailure();
        return value;
    }

    static Failure UsageFailure()
    {
        return new Failure(Outcome.WrongUsage,
            "usage: sell.exe SKU <CARD, with KEST_SERVER, KEST_PORT, KEST_KEY_FILE and KEST_GUID set");
    }

    static string Field(IntPtr thing, string name)
    {
        return Kestapi.Text(Kestapi.KestGetField(thing, name));
    }

    // A whole number of digits alone, up to `most`: what is not understood is not sold.
    static uint Number(string text, uint most)
    {
        uint number;
        bool isNumber = uint.TryParse(text, NumberStyles.None, CultureInfo.InvariantCulture, out number);
        if (!isNumber || number > most) throw UsageFailure();
        return number;
    }

    // Says once for the whole process which server sells, and for which application.
    static void Configure()
    {
        string server = Environment("KEST_SERVER"), guid = Environment("KEST_GUID");
        string keyFile = Environment("KEST_KEY_FILE");
        uint port = Number(Environment("KEST_PORT"), 65535);
        string key = File.ReadAllText(keyFile).Trim();
        if (key == "" || Kestapi.KestSetServer(server, port, key) == 0)
            throw new Failure(Outcome.NotSold, keyFile + " holds no public key of a server.");
        Kestapi.KestSetApplicationGuid(guid);
    }

    static void PrintProducts()
    {
        IntPtr list = Owned(Kestapi.KestCreateProductList());
        try
        {
            if (Kestapi.KestGetProductList(list, "1.0") == 0)
                throw new Failure(Outcome.NotSold, "No valid answer from the server (error 102). " +
                    "Nothing was charged: check server, port and key.");
            // A refusal does not make the call fail: it is a field of the list.
            string error = Field(list, "KEST-Error");
            if (error != "" && error != "0")
                throw new Failure(Outcome.Refused,
                    "The server refused the product list (error " + error + "). Nothing was charged.");
            for (IntPtr product; (product = Kestapi.KestNextProduct(list)) != IntPtr.Zero;)
                Console.WriteLine("{0,-6} {1,-24} {2}",
                    Field(product, "SKU"), Field(product, "Name"), Field(product, "Price"));
        }
        finally
        {
            Kestapi.KestDestroyProductList(list);
        }
    }

    static void SellOne(uint sku, string card)
    {
        IntPtr checkout = Owned(Kestapi.KestCreateCheckout());
        try
        {
            Kestapi.KestSetField(checkout, "KEST-CCard-Number", card);
            Kestapi.KestAddOrderLine(checkout, sku, 1);
            IntPtr purchase = Kestapi.KestBillCustomer(checkout);
            if (purchase == IntPtr.Zero) throw SaleFailure(Kestapi.KestGetErrorCode(checkout));
            string words = "Charged " + Field(purchase, "KEST-TotalAmount") + ", of which " +
                Field(purchase, "KEST-TaxAmount") + " is tax." + System.Environment.NewLine +
                "Transaction " + Field(purchase, "KEST-TxN");
            // It is a sale, whatever becomes of the output.
            try
            {
                Console.WriteLine(words);
            }
            catch (IOException)
            {
                Console.Error.WriteLine(words);
            }
        }
        finally
        {
            Kestapi.KestDestroyCheckout(checkout);
        }
    }

    static IntPtr Owned(IntPtr created)
    {
        if (created == IntPtr.Zero) throw SaleFailure(Kestapi.ErrorNone);
        return created;
    }

    static Failure SaleFailure(int code)
    {
        if (code == Kestapi.ErrorNone)
            return new Failure(Outcome.NotSold, "Nothing was sent and nothing charged: memory ran out.");
        if (code == Kestapi.ErrorExchange)
            return new Failure(Outcome.Unknown,
                "No valid answer to the sale (error 102): the card may have been charged.\n" +
                "Do not just repeat it; ask the seller first whether there is such a sale.");
        return new Failure(Outcome.Refused,
            "The server refused the sale (error " + code + "): " + Meaning(code) + ". Nothing was charged.");
    }

    // The codes are the server's own: these are the sandbox's.
    static string Meaning(int code)
    {
        switch (code)
        {
            case 1403: return "the card was declined";
            case 1404: return "the card has insufficient funds";
            case 1405: return "the card has expired";
            default: return "see the server's list of errors";
        }
    }

    static void Run(string[] arguments)
    {
        if (arguments.Length != 1) throw UsageFailure();
        uint sku = Number(arguments[0], uint.MaxValue);
        Configure();
        string card = (Console.ReadLine() ?? "").Trim();
        if (card == "") throw new Failure(Outcome.WrongUsage, "The first line of the input is to be a card number.");
        PrintProducts();
        SellOne(sku, card);
    }

    static int Main(string[] arguments)
    {
        try
        {
            Run(arguments);
            return (int)Outcome.Sold;
        }
        catch (Failure failure)
        {
            Console.Error.WriteLine(failure.Message);
            return (int)failure.Outcome;
        }
        // Not found; of the other width; of another version.
        catch (Exception error) when (error is DllNotFoundException || error is BadImageFormatException ||
            error is EntryPointNotFoundException)
        {
            Console.Error.WriteLine("The library cannot be loaded: " + error.Message);
            return (int)Outcome.NotSold;
        }
        catch (Exception error) when (error is IOException || error is UnauthorizedAccessException)
        {
            Console.Error.WriteLine(error.Message);
            return (int)Outcome.NotSold;
        }
    }
}
