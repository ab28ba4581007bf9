"""The pages as HTML: every link and picture leads to what is there, every anchor to what has its name, and nothing is
loaded from elsewhere nor run.

    check_html.py <folder of the pages>
"""
import sys
from html.parser import HTMLParser
from pathlib import Path
from urllib.parse import unquote


class Page(HTMLParser):
    def __init__(self, text):
        super().__init__()
        self.links, self.loads, self.names, self.faults = [], [], set(), []
        self.feed(text)

    def handle_starttag(self, tag, attrs):
        attrs = dict(attrs)
        self.names.add(attrs.get("id"))
        self.links += [attrs["href"]] if tag == "a" and "href" in attrs else []
        self.loads += [attrs[key] for key in ("src", "href") if key in attrs and tag != "a"]
        self.faults += [f"<{tag}>"] if tag in ("script", "iframe") else []
        self.faults += [f"{key} of <{tag}>" for key in attrs if key.startswith("on")]


root = Path(sys.argv[1]).resolve()
pages = {file: Page(file.read_text(encoding="utf-8")) for file in root.rglob("*.html")}
faults, links = [], 0
for file, page in pages.items():
    faults += [f"{file.relative_to(root)}: {fault}" for fault in page.faults]
    for target in page.links + page.loads:
        if "://" in target and target in page.links:
            continue
        links += 1
        path, _, anchor = unquote(target).partition("#")
        there = (file.parent / path).resolve() if path else file
        if not there.is_file() or anchor and anchor not in pages[there].names:
            faults.append(f"{file.relative_to(root)}: {target} leads nowhere")
for picture in root.rglob("*.svg"):
    if "<script" in picture.read_text(encoding="utf-8"):
        faults.append(f"{picture.relative_to(root)}: a script")
print(*faults, f"{len(pages)} pages, {links} links", sep="\n")
sys.exit(1 if faults or links < len(pages) else 0)
