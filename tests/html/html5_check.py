#!/usr/bin/python3
"""Parses each file (an HTML fragment as Ravelin_GetAsHTML writes it) inside an HTML5 document
with html5lib. Exit 0 when all parse without errors, 1 with the errors listed,
77 when html5lib is not installed."""
import sys

try:
    import html5lib
except ImportError:
    print("python3-html5lib is not installed")
    sys.exit(77)

PAGE = ("<!DOCTYPE html><html><head><meta charset=\"utf-8\"><title>check</title></head>"
        "<body>{}</body></html>")

failed = False
for path in sys.argv[1:]:
    with open(path, encoding="utf-8", errors="surrogateescape") as f:
        fragment = f.read()
    parser = html5lib.HTMLParser(strict=False)
    parser.parse(PAGE.format(fragment))
    if parser.errors:
        failed = True
        print(f"{path}: {fragment!r}")
        for position, code, data in parser.errors:
            print(f"  line {position[0]} column {position[1]}: {code} {data}")
sys.exit(1 if failed else 0)
