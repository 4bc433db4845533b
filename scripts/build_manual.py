#!/usr/bin/env python3
"""Builds the manual from Markdown: HTML pages, and a project that chmcmd compiles to one help file.

Usage: build_manual.py OUTPUT_FOLDER PAGE.md...  The first page is the one that opens. Links between the pages
and the pictures that they show come along.
"""

import html
import pathlib
import re
import shutil
import subprocess
import sys

TITLE = "Vantrel Help"

STYLE = """
body { margin: 0; color: #1d2430; background: #f2f3f5; font: 16px/1.55 "DejaVu Sans", sans-serif; }
nav { padding: 10px 24px; background: #fdfdfe; border-bottom: 1px solid #c4cad2; }
nav a { margin-right: 18px; }
main { max-width: 56em; margin: 0 auto; padding: 8px 24px 60px; background: #fff; }
a { color: #245fa3; }
h1, h2, h3 { line-height: 1.25; }
h2 { margin-top: 2em; border-bottom: 1px solid #c4cad2; }
img { max-width: 100%; }
table { border-collapse: collapse; margin: 1em 0; }
th, td { border: 1px solid #c4cad2; padding: 4px 10px; text-align: left; vertical-align: top; }
th { background: #f2f3f5; }
code, pre { font-family: "DejaVu Sans Mono", monospace; font-size: 0.92em; background: #f2f3f5; }
pre { padding: 10px; overflow-x: auto; }
"""

PAGE = """<!DOCTYPE html>
<html lang="en"><head><meta charset="utf-8"><title>{title}</title>
<link rel="stylesheet" type="text/css" href="style.css"></head>
<body><nav>{nav}</nav><main>
{body}
</main></body></html>
"""

SITEMAP = """<!DOCTYPE HTML PUBLIC "-//IETF//DTD HTML//EN">
<html><head></head><body>
<ul>
{items}</ul>
</body></html>
"""

ENTRY = (
    '<li><object type="text/sitemap"><param name="Name" value="{name}">'
    '<param name="Local" value="{file}"></object></li>\n'
)

PROJECT = """[OPTIONS]
Title={title}
Compiled file={title}.chm
Contents file=contents.hhc
Index file=index.hhk
Default topic={first}
Full-text search=Yes
Binary Index=No
Language=0x409 English (United States)

[FILES]
{files}
"""


def anchor(heading):
    """The fragment under which a heading is linked."""
    plain = re.sub(r"<[^>]+>", "", html.unescape(heading)).strip().lower()
    return re.sub(r"[^\w\- ]", "", plain).replace(" ", "-")


class Page:
    def __init__(self, source):
        self.source = source
        self.file = source.stem + ".html"
        self.headings = []  # level, text, anchor
        body = subprocess.run(
            ["cmark-gfm", "-e", "table", str(source)], check=True, capture_output=True, text=True
        ).stdout
        body = re.sub(r'href="(?!https?:)([^"#]*/)?([\w.-]+)\.md(#[^"]*)?"', r'href="\2.html\3"', body)
        self.body = re.sub(r"<h([1-3])>(.*?)</h\1>", self._with_anchor, body, flags=re.S)
        self.title = next((text for level, text, _ in self.headings if level == 1), source.stem)

    def _with_anchor(self, match):
        level, text = int(match[1]), match[2]
        self.headings.append((level, re.sub(r"<[^>]+>", "", html.unescape(text)), anchor(text)))
        return f'<h{level} id="{anchor(text)}">{text}</h{level}>'

    def pictures(self):
        return re.findall(r'<img src="(?!https?:)([^"]+)"', self.body)


def contents(pages):
    items = ""
    for page in pages:
        items += ENTRY.format(name=html.escape(page.title), file=page.file)
        sections = [heading for heading in page.headings if heading[0] == 2]
        if sections:
            items += "<ul>\n"
            for _, text, where in sections:
                items += ENTRY.format(name=html.escape(text), file=f"{page.file}#{where}")
            items += "</ul>\n"
    return SITEMAP.format(items=items)


def index(pages):
    entries = sorted(
        (text, f"{page.file}#{where}") for page in pages for level, text, where in page.headings if level > 1
    )
    return SITEMAP.format(items="".join(ENTRY.format(name=html.escape(name), file=file) for name, file in entries))


def main():
    output = pathlib.Path(sys.argv[1])
    pages = [Page(pathlib.Path(name)) for name in sys.argv[2:]]
    shutil.rmtree(output, ignore_errors=True)
    output.mkdir(parents=True)
    nav = "".join(f'<a href="{page.file}">{html.escape(page.title)}</a>' for page in pages)
    files = ["style.css"]
    (output / "style.css").write_text(STYLE)
    for page in pages:
        files.append(page.file)
        (output / page.file).write_text(
            PAGE.format(title=html.escape(f"{page.title} – Vantrel"), nav=nav, body=page.body), encoding="utf-8"
        )
        for picture in page.pictures():
            target = output / picture
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(page.source.parent / picture, target)
            files.append(picture)
    shutil.copy(output / pages[0].file, output / "index.html")
    (output / "contents.hhc").write_text(contents(pages), encoding="utf-8")
    (output / "index.hhk").write_text(index(pages), encoding="utf-8")
    project = PROJECT.format(title=TITLE, first=pages[0].file, files="\n".join(dict.fromkeys(files)))
    (output / "manual.hhp").write_text(project, encoding="utf-8")


if __name__ == "__main__":
    main()
