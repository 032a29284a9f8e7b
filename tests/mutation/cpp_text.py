"""Finds its way in C++ as clang-format leaves it: functions, statements, calls and the cells of a table's rows."""
import re

PAIRS = {"(": ")", "[": "]", "{": "}"}
LITERAL = re.compile(r'"(?:\\.|[^"\\])*"|\'(?:\\.|[^\'\\])\'')


def without_comments(text):
    """The same text, every character at its place, with blanks for comments."""
    pattern = re.compile(LITERAL.pattern + r"|//[^\n]*|/\*.*?\*/", re.S)
    return pattern.sub(lambda m: m[0] if m[0][0] in "\"'" else re.sub(r"[^\n]", " ", m[0]), text)


def closing(text, start):
    """Where the bracket that opens at start closes."""
    depth, position = 0, start
    while position < len(text):
        if literal := LITERAL.match(text, position):
            position = literal.end()
            continue
        if text[position] in PAIRS:
            depth += 1
        elif text[position] in PAIRS.values():
            depth -= 1
            if depth == 0:
                return position
        position += 1
    raise ValueError(f"nothing closes the bracket at {start}: {text[start:start + 60]!r}")


def cells(text, start, end):
    """The spans between the commas of a list."""
    spans, begin, position = [], start, start
    while position < end:
        if literal := LITERAL.match(text, position):
            position = literal.end()
        elif text[position] in PAIRS:
            position = closing(text, position) + 1
        else:
            if text[position] == ",":
                spans.append((begin, position))
                begin = position + 1
            position += 1
    spans.append((begin, end))
    return [trimmed(text, *span) for span in spans if text[slice(*span)].strip()]


def trimmed(text, start, end):
    part = text[start:end]
    return start + len(part) - len(part.lstrip()), end - (len(part) - len(part.rstrip()))


def calls(text, name):
    """Of each call of a function, which name matches: the span of the call, and those of its arguments."""
    for match in re.finditer(rf"(?<![\w.]){name}\(", text):
        end = closing(text, match.end() - 1)
        yield (match.start(), end + 1), cells(text, match.end(), end)


def functions(text, indents=("",)):
    """Name, result type and the span within the braces of each function that begins at one of the indents."""
    head = re.compile(r"^( *)((?:[\w:<>,*&~\[\]]+ )+[*&]*)([\w:]+)\(([^;{}]*?)\)"
                      r"([^;{}()]*|[^;{}]*requires [^;{}]*)\{", re.M)
    position = 0
    while match := head.search(text, position):
        position = match.start() + 1
        if match[1] not in indents or match[3] in ("if", "for", "while", "switch") or "consteval" in match[2]:
            continue
        end = closing(text, match.end() - 1)
        yield match[3], match[2].strip(), (match.end(), end)
        position = end


def statements(body):
    """Spans of the simple statements, without the ifs and fors that they belong to."""
    position, begin = 0, 0
    while position < len(body):
        if literal := LITERAL.match(body, position):
            position = literal.end()
        elif body[position] in "([":
            position = closing(body, position) + 1
        elif body[position] == "{":
            before = body[begin:position].rstrip()
            if not before or before.endswith(")") or re.search(r"\b(else|try|do)$", before):
                position += 1
                begin = position
            else:
                position = closing(body, position) + 1
        elif body[position] == "}":
            position += 1
            begin = position
        elif body[position] == ";":
            start, _ = trimmed(body, begin, position)
            yield without_heads(body, start, position), position + 1
            position += 1
            begin = position
        else:
            position += 1


def without_heads(body, start, end):
    """Where the statement itself begins, behind if (…), for (…), else and labels."""
    while match := re.match(r"(?:else\b\s*|(?:if|for|while|switch)(?: constexpr)? ?(?=\()|(?:case [\w:]+|default):\s*)",
                            body[start:end]):
        start += match.end()
        if body[start] == "(":
            start = closing(body, start) + 1
        start, _ = trimmed(body, start, end)
    return start
