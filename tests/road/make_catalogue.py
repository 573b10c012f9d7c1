"""Prints a catalogue for the road tests: make_catalogue.py GUID=PRODUCTS..."""
import json
import sys


def product(sku):
    return {"SKU": sku, "Name": f"Product number {sku}", "Price": f"{sku // 100}.{sku % 100:02}", "Licence": "single user"}


applications = []
for argument in sys.argv[1:]:
    guid, count = argument.split("=")
    applications.append({"guid": guid, "products": [product(sku) for sku in range(1, int(count) + 1)]})
json.dump({"applications": applications}, sys.stdout)
