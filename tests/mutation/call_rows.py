"""The rows of the exported calls: every statement of theirs is changed in each way that its column allows."""
import re

from cpp_text import calls, cells, closing, functions, statements, without_comments
from mutants import Mutant

RULES = ["transport_rule", "one_is_success_rule", "zero_rule", "sign_rule", "pass_through_rule"]
LINES = r"(?:PLAIN_)?(?:ENTRY|INFO|FAILURE|EXCEPTION|DETAIL)(?:_AT)?"
# What a log line prints of an address is not the same twice; tests do not compare it.
ADDRESS = re.compile(r"static_cast<(const )?void \*>|address\(")


class Row:
    """A function's body, and its changes."""

    def __init__(self, body, neighbours, table, name, tests):
        self.body, self.neighbours = body, neighbours
        self.table, self.name, self.tests = table, name, tests
        self.mutants = []

    def change(self, column, span, text):
        start, end = span
        body = self.body[:start] + text + self.body[end:]
        if body != self.body and all(body != known.text for known in self.mutants):
            old = " ".join(self.body[start:end].split())
            change = f"{old[:70]} -> {' '.join(text.split())[:70] or 'nothing'}"
            self.mutants.append(Mutant(self.table, self.name, column, change, self.tests, text=body))

    def other(self, column, span):
        if not ADDRESS.search(self.body[slice(*span)]):
            self.change(column, span, f"::mutation::other({self.body[slice(*span)]})")

    def all_mutants(self):
        for kind in (self.requests, self.rules, self.log_lines, self.conditions, self.removals, self.returns,
                     self.constants):
            kind()
        return self.mutants

    def requests(self):
        """The method, each value that is sent, whether the result is asked for, and the order."""
        for name in ("call.remote", "call.post"):
            for _, (method, *arguments) in calls(self.body, re.escape(name)):
                method_name = self.body[slice(*method)]
                self.change("method", method, self.neighbours[method_name])
                for argument in arguments:
                    text = self.body[slice(*argument)]
                    if text == "service_result":
                        self.change("result asked for", argument, "[] { static int lost; return &lost; }()")
                    elif not text.startswith("&"):
                        self.other("argument", argument)
                for first, second in zip(arguments, arguments[1:]):
                    one, two = self.body[slice(*first)], self.body[slice(*second)]
                    self.change("order", (first[0], second[1]), f"{two}, {one}")

    def rules(self):
        for match in re.finditer(r"answer\.(\w+_rule)\((.*)\);", self.body):
            head = self.body[:match.start()]
            if re.search(r"if \(!answer\)\s*return $", head):
                continue  # nothing was delivered, which every rule takes for the same
            for rule in RULES:
                if rule != match[1]:
                    self.change("rule", match.span(), f"answer.{rule}();")
        for match in re.finditer(r"\bCall call\((.*)\)", self.body):
            self.change("support check", (match.start(), closing(self.body, match.end(0) - len(match[1]) - 2) + 1),
                        f"Call call = Call::on_existing_session({match[1]})")
        for match in re.finditer(r"judged\(Success::(\w+)", self.body):
            for success in {"is_one", "is_zero", "is_not_negative"} - {match[1]}:
                self.change("rule", match.span(1), success)

    def log_lines(self):
        for _, arguments in calls(self.body, LINES):
            for span in arguments:
                text = self.body[slice(*span)]
                if text.startswith('"'):
                    self.change("line", span, '"~' + text[1:])
                elif text not in ("here", "Here()"):
                    self.other("line's value", span)

    def conditions(self):
        for match in re.finditer(r"\bif (?:constexpr )?\(", self.body):
            start, end = match.end(), closing(self.body, match.end() - 1)
            if (semicolon := self.body.rfind(";", start, end)) >= 0:
                start = semicolon + 2
            condition = self.body[start:end]
            if re.match(r"(const )?(auto|int) ", condition):
                continue  # declares what it tests
            if condition in ("answer", "!answer", "call"):
                self.change("guard", (start, end), "false" if condition == "!answer" else "true")
            self.change("condition", (start, end), f"!({condition})")

    def removals(self):
        for start, end in statements(self.body):
            text = self.body[start:end]
            is_call = (re.match(r"(svc_|[\w:]+(?:<[\w:]+>)?|[\w.]+)\(", text) and
                       not text.startswith(("return", "static_cast")))
            is_assignment = re.match(r"[*\w.\[\]]+ = ", text)
            if is_call or is_assignment:
                self.change("effect", (start, end), ";")

    def returns(self):
        for start, end in statements(self.body):
            if match := re.match(r"return (?!\{)(.*);$", self.body[start:end], re.S):
                self.other("returned", (start + match.start(1), start + match.end(1)))

    def constants(self):
        """Numbers that stand in the row. The first values of outputs are none: what is asked writes first of all, and
        nothing reads them before."""
        delivered = set()
        for name in (r"call\.remote", r"call\.post", "g_variant_get", r"(?:Is[A-Z]|GetC)\w+"):
            for _, arguments in calls(self.body, r"(?<!\()" + name):
                delivered |= {self.body[slice(*span)].lstrip("&") for span in arguments}
        for match in re.finditer(r"\b(\w+)(?:\[\])? = (-?\d[\d']*|\{)(?=[;,}\d])", self.body):
            if match[2] == "{":
                opening = match.end() - 1
                for span in cells(self.body, opening + 1, closing(self.body, opening)):
                    self.other("constant", span)
            elif match[1] not in delivered or match[0].startswith("recording ="):
                self.change("constant", match.span(2), f"{match[2]} + 1")


def mutants_of(path, text, wanted, neighbours, tests):
    """The mutants of the wanted functions of a file: (span of the body, result type, mutants) each."""
    bare = without_comments(text)
    for name, result, span in functions(bare):
        if re.match(wanted, name) and not result.startswith("template"):
            row = Row(bare[slice(*span)], neighbours, f"calls of {path.name}", name, tests(name))
            if found := row.all_mutants():
                yield span, result, found
