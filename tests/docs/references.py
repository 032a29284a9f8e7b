"""What a page refers to has to be there: pages, headings, folders and files."""
import functools
import pathlib
import re

from document import Document

# Names of files and folders are those that begin with a folder of the tree. A name with a blank, a pattern, a
# placeholder in capitals or an ellipsis is not looked for; what is built is not either.
PATH = re.compile(r"(?<![\w./~-])((?:bench|cmake|docs|examples|fuzz|include|interface|packaging|platform|res|scripts|"
                  r"simulator|src|tests|tools)/[\w./-]*)(?![\w*{<…])")
PLACEHOLDER = re.compile(r"(?:^|/)[A-Z]{2,}\b(?!\.md)")

parse = functools.cache(Document)


def missing_links(document):
    for line, link in document.links:
        target, _, anchor = link.partition("#")
        if re.match(r"\w+:", target):
            continue
        page = (document.path.parent / target) if target else document.path
        if not page.exists():
            yield line, f"{link}: there is no {target}"
        elif anchor and anchor not in parse(page.resolve()).anchors:
            yield line, f"{link}: there is no such heading"


def missing_paths(document, source):
    for line, text in document.code + document.pictures:
        for name in PATH.findall(text):
            name = name.rstrip(".")
            if not PLACEHOLDER.search(name) and not (source / name).exists():
                yield line, f"{name}: the tree has no such file"


def missing_pages(document, source):
    """The index names every page."""
    if document.path.resolve() == (source / "docs/README.md").resolve():
        named = {(document.path.parent / link.partition("#")[0]).resolve() for _, link in document.links}
        for page in sorted((source / "docs").glob("*.md")):
            if page.resolve() not in named | {document.path.resolve()}:
                yield 1, f"{page.name} is not in this index"


def problems(document, source):
    source = pathlib.Path(source)
    return [*missing_links(document), *missing_paths(document, source), *missing_pages(document, source)]
