"""A page of the documentation, parsed: its fenced blocks, its headings, and what it refers to."""
import dataclasses
import pathlib
import re

from markdown_it import MarkdownIt


@dataclasses.dataclass
class Block:
    line: int
    language: str
    words: list[str]  # what stands behind the language: readers do not see it
    text: str


class Document:
    def __init__(self, path):
        self.path = pathlib.Path(path)
        tokens = MarkdownIt("commonmark").enable("table").parse(self.path.read_text(encoding="utf-8"))
        self.blocks = [self._block(token) for token in tokens if token.type == "fence"]
        self.pictures = [(token.map[0] + 1, token.content) for token in tokens if token.type == "code_block"]
        self.anchors = self._anchors(tokens)
        inline = [(token.map[0] + 1 if token.map else 0, child)
                  for token in tokens if token.type == "inline" for child in token.children]
        self.links = [(line, child.attrs["href"]) for line, child in inline if child.type == "link_open"]
        self.code = [(line, child.content) for line, child in inline if child.type == "code_inline"]

    @staticmethod
    def _block(token):
        language, *words = token.info.split() or [""]
        return Block(token.map[0] + 1, language, words, token.content)

    @staticmethod
    def _anchors(tokens):
        """The anchors of the headings, as the usual viewers make them."""
        anchors = set()
        for heading, text in zip(tokens, tokens[1:]):
            if heading.type == "heading_open":
                title = "".join(child.content for child in text.children)
                anchors.add(re.sub(r"[^\w\- ]", "", title.lower()).replace(" ", "-"))
        return anchors
