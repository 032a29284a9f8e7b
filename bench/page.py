"""Puts what was measured into a page, in the place of what stands there."""


class NoPlace(Exception):
    """The page has no marks."""


def refresh(path, name, text):
    """Writes the text between the page's marks of that name."""
    begin, end = f"<!-- {name} -->", "<!-- until here -->"
    with open(path, encoding="utf-8") as file:
        before, begin_found, rest = file.read().partition(begin)
    _, end_found, after = rest.partition(end)
    if not begin_found or not end_found:
        raise NoPlace(f"{path}: nothing stands between {begin} and {end}")
    with open(path, "w", encoding="utf-8") as file:
        file.write(f"{before}{begin}\n{text}\n{end}{after}")
