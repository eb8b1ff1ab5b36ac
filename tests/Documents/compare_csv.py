"""Compares the rows that were read and written again with those that were made."""
import csv, glob, io
codecs = ["utf-8", "utf-16-le", "utf-16-be", "utf-32-le", "utf-32-be", "cp1252", "latin-1"]
def rows(name, codec):
    return list(csv.reader(io.StringIO(open(name, newline="", encoding=codec).read().lstrip("\ufeff"), newline="")))
for name in sorted(glob.glob("in*")):
    codec = codecs[int(name[2])]
    if rows(name, codec) != rows("back" + name[2:], codec):
        print(name)
print("compared")
