"""Reads a workbook by another library, and prints what it does not see as expected."""
import json, openpyxl, zipfile, xml.dom.minidom
for name in zipfile.ZipFile("book.xlsx").namelist():
    xml.dom.minidom.parseString(zipfile.ZipFile("book.xlsx").read(name))
book = openpyxl.load_workbook("book.xlsx")
print(book.sheetnames, [str(r) for r in book.worksheets[0].merged_cells.ranges])
for at, kind, value in json.load(open("expected.json")):
    cell = book.worksheets[0][at]
    seen = cell.value if cell.value is not None or kind == "n" else ""
    right_type = {"n": (int, float, type(None)), "b": bool, "inlineStr": str}[kind]
    if seen != value or not isinstance(seen, right_type) or cell.data_type not in (kind, "s"):
        print(at, kind, repr(value)[:80], cell.data_type, repr(seen)[:80])
