#!/usr/bin/python3
"""Checks that font names reach the browser as names and nothing else. Each argument pair is an
HTML file (one fragment as Ravelin_GetAsHTML writes it, for one character in one font) and a file
holding the font name. The fragment must parse as HTML5 without errors (html5lib) into spans and at
most one style element, with no other elements; the CSS of the style element and of the style
attributes must parse (tinycss2) into rules and declarations of font-family only, whose value is
the name. Exit 0 when all pass, 1 with the failures listed, 77 when html5lib or tinycss2 is not
installed."""
import sys

try:
    import html5lib
    import tinycss2
except ImportError as missing:
    print(f"{missing.name} is not installed")
    sys.exit(77)

PAGE = ("<!DOCTYPE html><html><head><meta charset=\"utf-8\"><title>check</title></head>"
        "<body>{}</body></html>")
NS = "{http://www.w3.org/1999/xhtml}"


def family(declaration):
    """The font name of a font-family declaration: a string, or identifiers joined by blanks."""
    tokens = [t for t in declaration.value if t.type != "whitespace"]
    if len(tokens) == 1 and tokens[0].type == "string":
        return tokens[0].value
    if all(t.type == "ident" for t in tokens):
        return " ".join(t.value for t in tokens)
    return None


def problems(fragment, name):
    parser = html5lib.HTMLParser(strict=False)
    document = parser.parse(PAGE.format(fragment))
    found = [f"HTML: {code} {data}" for _, code, data in parser.errors]
    body = document.find(f"{NS}body")
    css_lists = []
    for element in body.iter():
        tag = element.tag.replace(NS, "")
        if tag == "style":
            rules = tinycss2.parse_stylesheet(element.text or "", skip_whitespace=True)
            for rule in rules:
                if rule.type != "qualified-rule":
                    found.append(f"CSS: {rule.type} in the style element")
                    continue
                css_lists.append(rule.content)
        elif tag not in ("body", "span", "p"):
            found.append(f"element <{tag}>")
        if element.get("style") is not None:
            css_lists.append(tinycss2.parse_component_value_list(element.get("style")))
    if not css_lists:
        found.append("no CSS at all")
    for content in css_lists:
        for item in tinycss2.parse_declaration_list(content, skip_whitespace=True):
            if item.type != "declaration" or item.lower_name != "font-family":
                found.append(f"CSS: {item.type} {getattr(item, 'name', '')}")
            elif family(item) != name:
                found.append(f"font-family {tinycss2.serialize(item.value)!r}")
    return found


failed = False
arguments = sys.argv[1:]
for html_path, name_path in zip(arguments[::2], arguments[1::2]):
    with open(html_path, encoding="utf-8", errors="surrogateescape") as f:
        fragment = f.read()
    with open(name_path, encoding="utf-8", errors="surrogateescape") as f:
        name = f.read()
    found = problems(fragment, name)
    if found:
        failed = True
        print(f"{name!r}: {fragment!r}")
        for problem in found:
            print(f"  {problem}")
sys.exit(1 if failed else 0)
