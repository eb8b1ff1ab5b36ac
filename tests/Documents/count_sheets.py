"""Prints how many sheets another library finds in a workbook."""
import openpyxl

print(len(openpyxl.load_workbook("book.xlsx").sheetnames))
