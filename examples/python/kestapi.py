"""KESTAPI for Python, by ctypes alone: KESTAPI.DLL by ordinal on Windows (with a Python of as many bits), the functions of
libkestapi.so by name elsewhere.

    library = kestapi.load()
    checkout = library.KestCreateCheckout()

Texts are bytes of the system's 8-bit characters: see text() and data(). Objects are addresses, None for null; each is
destroyed by the function of its kind. What kestapi.h says of the functions holds here too.
"""
import ctypes
import os
import sys
import types

ERROR_NONE = 0
ERROR_EXCHANGE = 102

_object = ctypes.c_void_p
_text = ctypes.c_char_p
_bool = ctypes.c_uint8
_signed = ctypes.c_int32
_unsigned = ctypes.c_uint32

# Name: ordinal, result, arguments.
FUNCTIONS = {
    "KestFreeFieldSet": (100, None, (_object,)),
    "KestCreateFieldSet": (101, _object, ()),
    "KestSetServer": (102, _bool, (_text, _unsigned, _text)),
    "KestGetField": (103, _text, (_object, _text)),
    "KestGetFieldName": (104, _text, (_object, _signed)),
    "KestGetFieldCount": (105, _signed, (_object,)),
    "KestGetFieldValue": (106, _text, (_object, _signed)),
    "KestGetErrorCode": (107, _signed, (_object,)),
    "KestAddField": (108, None, (_object, _text, _text)),
    "KestSetField": (109, None, (_object, _text, _text)),
    "KestSetProxy": (110, None, (_text, _unsigned)),
    "KestCreateCheckout": (500, _object, ()),
    "KestDestroyCheckout": (501, None, (_object,)),
    "KestConfigureServer": (502, _bool, (_object,)),
    "KestCreatePurchase": (504, _object, ()),
    "KestDestroyPurchase": (505, None, (_object,)),
    "KestCreateProductList": (506, _object, ()),
    "KestDestroyProductList": (507, None, (_object,)),
    "KestGetBillProduct": (509, _object, (_object, _unsigned)),
    "KestGetBillProductCount": (510, _signed, (_object,)),
    "KestSetApplicationGuid": (512, None, (_text,)),
    "KestAddOrderLine": (514, None, (_object, _unsigned, _unsigned)),
    "KestBillCustomer": (515, _object, (_object,)),
    "KestGetBill": (517, _object, (_object,)),
    "KestLoadReceipt": (523, _bool, (_object, _text)),
    "KestGetProductList": (524, _bool, (_object, _text)),
    "KestNextProduct": (525, _object, (_object,)),
    "KestClearOrder": (526, None, (_object,)),
}

_is_windows = sys.platform == "win32"
_encoding = "mbcs" if _is_windows else "utf-8"


def load(path=None):
    """The library's functions as attributes. OSError when it cannot be loaded, AttributeError when it lacks one."""
    path = path or os.environ.get("KESTAPI_LIBRARY")
    if _is_windows:
        library = ctypes.WinDLL(path or "KESTAPI.DLL")
    else:
        library = ctypes.CDLL(path or "libkestapi.so.0")
    functions = types.SimpleNamespace()
    for name, (ordinal, result, arguments) in FUNCTIONS.items():
        function = library[ordinal if _is_windows else name]
        # Without these, addresses would be cut to the 32 bits of an int.
        function.restype, function.argtypes = result, arguments
        setattr(functions, name, function)
    return functions


def text(value):
    """What the library answered, as str; empty for null."""
    return (value or b"").decode(_encoding, "replace")


def data(value):
    """A str for the library."""
    return value.encode(_encoding, "replace")
