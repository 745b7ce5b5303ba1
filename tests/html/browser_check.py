#!/usr/bin/python3
"""Renders Ravelin_GetAsHTML's HTML of a styled sample in headless Chromium and compares the
computed style of every character with the style the sample gave it in the host.

The sample uses every face, colours, fonts, sizes, a paragraph of each alignment and the
characters that need escaping; it is converted with three sets of parameters (tags and classes
by default, all inline, a mix). Every output must also parse as HTML5 without errors.

usage: browser_check.py FMSIM
Exit 0 when all match, 1 on a difference, 77 (skipped) when chromium or html5lib is missing
outside CI."""
import html
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile

FACES = {
    "Bold": 256, "Italic": 512, "Underline": 1024, "WordUnderline": 64, "DoubleUnderline": 128,
    "Strikethrough": 1, "Condense": 8192, "Extend": 16384, "SmallCaps": 2, "Uppercase": 16,
    "Lowercase": 32, "Titlecase": 48, "HighlightYellow": 4096, "Superscript": 4, "Subscript": 8,
}


def run(text, *faces, color=None, font=None, size=None):
    return {"text": text, "faces": faces, "color": color, "font": font, "size": size}


SAMPLE = [
    ("none", [run("Dear "), run("Ada", "Bold"), run(", "), run("this", "Italic"),
              run(" is ", "Underline"), run("double", "DoubleUnderline"),
              run(" and so ", "WordUnderline"), run("struck", "Strikethrough"),
              run("both", "Underline", "Strikethrough")]),
    ("right", [run("tight", "Condense"), run(" wide", "Extend"), run(" E=mc"),
               run("2", "Superscript"), run(" H"), run("2", "Subscript"), run("O "),
               run("Caps", "SmallCaps"), run(" upper", "Uppercase"), run(" LOWER", "Lowercase"),
               run(" title case", "Titlecase")]),
    ("center", [run("marked", "HighlightYellow"), run(" red", color=(255, 0, 16)),
                run(" Courier", font="Courier New"), run(" big", size=20),
                run(" mix", "Bold", "Italic", color=(0, 128, 0), size=18, font="DejaVu Sans"),
                run(" top", "Superscript", "Bold", size=11)]),
    ("full", [run('a <tag> & "quote"\nnext\u2028line\u00a0nbsp '),
              run("bold red", "Bold", color=(255, 0, 16)), run(" end", "HighlightYellow")]),
    ("left", [run("left aligned "), run("bold", "Bold"), run(" red", color=(255, 0, 16))]),
]

# (through a variable, parameters): a variable's values are paragraphs with their alignment; a
# text given directly has paragraphs without elements.
CONVERSIONS = [
    (True, []),
    (True, ['""', '""', '"all"']),
    (True, ['"bold=strong¶italic=em"', '"color+size=c¶right=al¶all=m"', '"all"']),
    (False, []),
]


def quoted(text):
    """A calculation for `text`, special characters through Char."""
    parts, current = [], ""
    for ch in text:
        if ch in "\n\u2028\u00a0":
            if current:
                parts.append('"' + current + '"')
            parts.append(f"Char ( {ord(ch)} )")
            current = ""
        else:
            current += '\\"' if ch == '"' else ch
    if current:
        parts.append('"' + current + '"')
    return " & ".join(parts)


def run_calc(r):
    calc = quoted(r["text"])
    if r["faces"]:
        calc = f"TextStyleAdd ( {calc} ; {' + '.join(r['faces'])} )"
    if r["color"]:
        calc = "TextColor ( {} ; RGB ( {} ; {} ; {} ) )".format(calc, *r["color"])
    if r["font"]:
        calc = f'TextFont ( {calc} ; "{r["font"]}" )'
    if r["size"]:
        calc = f"TextSize ( {calc} ; {r['size']} )"
    return calc


def sample_calc(variable, parameters):
    paragraphs = [f'FMSim_TextAlign ( {" & ".join(run_calc(r) for r in runs)} ; "{align}" )'
                  for align, runs in SAMPLE]
    text = " & ¶ & ".join(paragraphs)
    if not variable:
        return f"Ravelin_GetAsHTML ( {' ; '.join([text] + parameters)} )"
    args = ['"$t"'] + parameters
    return f"Let ( $t = {text} ; Ravelin_GetAsHTML ( {' ; '.join(args)} ) )"


def expected_style(r, ch, align, variable):
    if variable and ch in "\n\u2028":
        return None  # a value separator: the values around it are paragraphs of their own
    faces = sum(FACES[f] for f in r["faces"])
    lines = set()
    if faces & 1024 or (faces & 64 and not faces & 128 and ch == " ") or faces & 128:
        lines.add("underline")
    if faces & 1:
        lines.add("line-through")
    transform = ("capitalize" if faces & 48 == 48 else "uppercase" if faces & 16
                 else "lowercase" if faces & 32 else "none")
    style = {
        "weight": "700" if faces & 256 else "400",
        "style": "italic" if faces & 512 else "normal",
        "lines": sorted(lines),
        "double": bool(faces & 128 and not faces & 1024),
        "color": "rgb({}, {}, {})".format(*(r["color"] or (0, 0, 0))),
        "background": "rgb(255, 255, 0)" if faces & 4096 else "rgba(0, 0, 0, 0)",
        "family": r["font"] or "serif",
        "valign": "super" if faces & 4 else "sub" if faces & 8 else "baseline",
        "variant": "small-caps" if faces & 2 else "normal",
        "transform": transform,
        "spacing": "-2px" if faces & 8192 else "2px" if faces & 16384 else "normal",
        "align": {"right": "right", "center": "center", "full": "justify"}.get(align, "start")
        if variable else "start",
    }
    # Browsers make sup and sub smaller, also inside a tag that carries the host's size.
    if not faces & 12:
        style["size"] = f"{r['size'] or 16}px"
    return style


PAGE = """<!DOCTYPE html><html><head><meta charset="utf-8"><title>check</title>
<style>body {{ font-family: serif; font-size: 16px; color: #000000; }}</style></head>
<body><div id="sample">{}</div><script>
function inlineChain(el, stop) {{
  const chain = [];
  for (; el && el !== stop; el = el.parentElement) chain.push(el);
  return chain;
}}
const sample = document.getElementById("sample");
const walker = document.createTreeWalker(sample, NodeFilter.SHOW_TEXT);
const nodes = [];
for (let n = walker.nextNode(); n; n = walker.nextNode()) {{
  if (n.parentElement.closest("style")) continue;
  const parent = n.parentElement;
  const s = getComputedStyle(parent);
  const chain = inlineChain(parent, sample);
  const lines = new Set();
  let double = false, valign = "baseline", background = "rgba(0, 0, 0, 0)";
  for (const el of chain) {{
    const c = getComputedStyle(el);
    for (const l of c.textDecorationLine.split(" ")) if (l !== "none") lines.add(l);
    if (c.textDecorationLine.includes("underline") && c.textDecorationStyle === "double") double = true;
    if (background === "rgba(0, 0, 0, 0)") background = c.backgroundColor;
    if (valign === "baseline" && c.display === "inline") valign = c.verticalAlign;
  }}
  nodes.push({{text: n.data, style: {{
    weight: s.fontWeight, style: s.fontStyle, lines: [...lines].sort(), double: double,
    color: s.color, background: background, family: s.fontFamily.replace(/"/g, ""),
    valign: valign, variant: s.fontVariantCaps, transform: s.textTransform,
    spacing: s.letterSpacing, align: s.textAlign, size: s.fontSize}}}});
}}
const out = document.createElement("pre");
out.id = "rvl-result";
out.textContent = JSON.stringify(nodes);
document.body.appendChild(out);
</script></body></html>"""


def render(chromium, page, workdir):
    path = os.path.join(workdir, "page.html")
    with open(path, "w", encoding="utf-8") as f:
        f.write(page)
    dom = subprocess.run(
        [chromium, "--headless", "--no-sandbox", "--disable-gpu", "--no-first-run",
         f"--user-data-dir={os.path.join(workdir, 'profile')}", "--dump-dom", "file://" + path],
        capture_output=True, text=True, timeout=120).stdout
    found = re.search(r'<pre id="rvl-result">(.*?)</pre>', dom, re.S)
    if not found:
        raise RuntimeError("no result from chromium:\n" + dom[-2000:])
    return json.loads(html.unescape(found.group(1)))


def compare(nodes, variable):
    expected = []  # (character as the DOM has it, style)
    for align, runs in SAMPLE:
        for r in runs:
            for ch in r["text"]:
                dom_ch = "\n" if ch in "\n\u2028" else ch
                expected.append((dom_ch, expected_style(r, ch, align, variable)))
    text = "".join(ch for ch, _ in expected)
    problems, pos = [], 0
    for node in nodes:
        data = node["text"]
        if not text.startswith(data, pos):
            # Paragraph separators: returns after closing tags.
            stripped = data.lstrip("\r\n")
            if stripped == "" or not text.startswith(stripped, pos):
                if data.strip():
                    problems.append(f"unexpected text {data!r} at {pos}")
                continue
            data = stripped
        for i, _ in enumerate(data):
            want = expected[pos + i][1]
            if want is None:
                continue
            got = {k: node["style"][k] for k in want}
            if got != want:
                diff = {k: (got[k], want[k]) for k in want if got[k] != want[k]}
                problems.append(f"{data!r}[{i}] {text[pos + i]!r}: (got, wanted) {diff}")
        pos += len(data)
    if pos != len(text):
        problems.append(f"text missing from {pos}: {text[pos:]!r}")
    return problems


def html5_errors(fragment):
    import html5lib
    parser = html5lib.HTMLParser()
    parser.parse("<!DOCTYPE html><html><head><title>t</title></head><body>" + fragment +
                 "</body></html>")
    return parser.errors


def skip_or_fail(message):
    print(message)
    sys.exit(1 if os.environ.get("CI") else 77)


def main():
    fmsim = sys.argv[1]
    chromium = shutil.which("chromium") or shutil.which("chromium-browser")
    if not chromium:
        skip_or_fail("chromium is not installed: browser check skipped")
    try:
        import html5lib  # noqa: F401
    except ImportError:
        skip_or_fail("python3-html5lib is not installed: browser check skipped")
    failed = False
    with tempfile.TemporaryDirectory() as workdir:
        for variable, parameters in CONVERSIONS:
            calc = sample_calc(variable, parameters)
            out = subprocess.run([fmsim, "--json", "-e", calc], capture_output=True, text=True,
                                 timeout=120, check=True).stdout
            result = json.loads([line for line in out.splitlines()
                                 if line.startswith('{"type"')][-1])
            label = ("variable, " if variable else "text, ") + "parameters " + (
                " ; ".join(parameters) or "(defaults)")
            if result["type"] != "Text" or result["error"] != 0:
                print(f"{label}: {result}")
                failed = True
                continue
            fragment = result["text"]
            errors = html5_errors(fragment)
            problems = [f"HTML5: {e}" for e in errors] + compare(
                render(chromium, PAGE.format(fragment), workdir), variable)
            print(f"{label}: {len(problems)} differences")
            for p in problems:
                print("  " + p)
            if problems:
                print("  HTML: " + fragment.replace("\r", "\\r\n"))
                failed = True
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
