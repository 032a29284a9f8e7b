"""Rows that have a shape of their own: remote methods, types' letters, log lines, digits; and the rules of results."""
import re
import xml.etree.ElementTree

from call_rows import Row
from cpp_text import functions, statements, without_comments
from mutants import Mutant

RULE_TESTS = [r"^unit/.*(Judged|Answer)",
              r"(SendItsRequest|EveryRemoteCall).*/svc_pvr_(set_keep_state_flag|format|mkdir|stop_playing_sync|"
              r"get_recording_type_by_service_id|precheck_recording_available|play_pause|get_handle)$",
              "SessionCalls|LocalCalls"]
EXCHANGE_TESTS = [r"SendItsRequest.*/svc_pvr_(play_pause|get_handle_for_record)$",
                  r"EveryRemoteCall.*/svc_pvr_(get_handle|play_pause)$", "StopPvrSync"]
RULE = r".*_rule$|judged$|judged_and_logged$"


def wire_rows(wire):
    return re.findall(r"^WIRE(?:_ASYNCHRONOUS)?\((\w+)", wire, re.M)


def neighbours(wire, interface):
    """For each method the next one that takes and gives the same; the next one at all when there is none."""
    types = {}
    for method in xml.etree.ElementTree.fromstring(interface).iter("method"):
        types[method.get("name")] = [(argument.get("direction"), argument.get("type"))
                                     for argument in method.iter("arg")]
    rows = wire_rows(wire)
    found = {}
    for i, name in enumerate(rows):
        following = rows[i + 1:] + rows[:i]
        alike = (other for other in following if types[other] == types[name])
        found[f"wire::{name}"] = "wire::" + next(alike, following[0])
    return found


def callers(tree):
    """The exported functions that make use of each remote method."""
    found = {}
    for file in (tree / "src").rglob("*.cpp"):
        text = without_comments(file.read_text(encoding="utf-8"))
        for name, _, (start, end) in functions(text):
            for method in re.findall(r"\bwire::(\w+)", text[start:end]):
                found.setdefault(method, []).append(name)
    return found


def plant_wire(planter):
    """Each remote method under another's name, and each container's type."""
    source = planter.source("src/client/wire.h")
    users = callers(planter.tree)
    rows = wire_rows(source.original)
    for match in re.finditer(r'^WIRE(_ASYNCHRONOUS)?\((\w+)(?:, "(.*)")?\);', source.original, re.M):
        name, contents = match[2], match[3]
        following = rows[(rows.index(name) + 1) % len(rows)]
        tests = [rf"SendItsRequest.*/({'|'.join(users.get(name, ['unused']))})(?![a-z_])", "StopPvrSync"]
        kind = f"Remote<decltype(org_vexan_tv_pvr_call_{name}{'' if match[1] else '_sync'})>"
        tail = f', "{contents}"' if contents else ""
        mutants = [Mutant("wire.h", name, "name", f"{name} -> {following}", tests, text=f'{{"{following}"{tail}}}')]
        if contents:
            wrong = contents[:-1] + "i)"
            mutants.append(Mutant("wire.h", name, "type", f"{contents} -> {wrong}", tests,
                                  text=f'{{"{name}", "{wrong}"}}'))
        planter.number(mutants)
        forms = "".join(f", {mutant.text}" for mutant in mutants)
        source.replace(*match.span(), [(
            f'inline constexpr {kind} {name}_forms[]{{{{"{name}"{tail}}}{forms}}}; '
            f"inline const {kind} &{name} = {name}_forms[::mutation::form({mutants[0].number}, {len(mutants)})];", 0)])


def plant_letters(planter):
    """The letter of each type that a request or a reply is spelled with; the forms of each are spelled side by side."""
    source = planter.source("src/client/wire_format.h")
    text = source.original
    rows = list(re.finditer(r"^template <> inline constexpr char (sent|received)<(.*?)> += '(\w)';", text, re.M))
    mutants = []
    for kind in ("sent", "received"):
        letters = [row[3] for row in rows if row[1] == kind]
        for row, new in zip((row for row in rows if row[1] == kind), letters[1:] + letters[:1]):
            mutants.append(Mutant("wire_format.h", f"{kind}<{row[2]}>", "letter", f"{row[3]} -> {new}",
                                  ["SendItsRequest", "EveryRemoteCall"]))
            source.replace(*row.span(), [(f"template <int form> inline constexpr char {kind}<{row[2]}, form> = "
                                          f"form == {len(mutants)} ? '{new}' : '{row[3]}';", 0)])
        primary = f"template <typename Parameter> inline constexpr char {kind} = 0;"
        start = text.index(primary)
        source.replace(start, start + len(primary), [(primary.replace("Parameter>", "Parameter, int form = 0>"), 0)])
    planter.number(mutants)
    container = "template <> inline constexpr char received<GVariant **> = "
    start = text.index(container)
    source.replace(start, start + len(container),
                   [("template <int form> inline constexpr char received<GVariant **, form> = ", 0)])

    forms = range(len(mutants) + 1)
    now = f"::mutation::form({mutants[0].number}, {len(mutants)})"
    end = text.index("    static constexpr bool has_container")
    source.replace(end, end, [("".join(
        f"template <int form> static constexpr auto {name}_form = spelled(std::array{{{kind}<Parameters, form>...}});\n"
        f"static constexpr const char *{name}_forms[] = {{"
        + ", ".join(f"{name}_form<{form}>.data()" for form in forms) + "};\n"
        for name, kind in (("request", "sent"), ("reply", "received"))), 0)])
    end = text.index("    consteval explicit(false) Remote")
    source.replace(end, end, [(
        f"const char *request_now() const {{ return detail::Formats<Function>::request_forms[{now}]; }}\n"
        "const char *reply_now() const { return detail::Formats<Function>::has_container ? reply "
        f": detail::Formats<Function>::reply_forms[{now}]; }}\n", 0)])
    user = planter.source("src/client/call.h")
    for match in re.finditer(r"\bmethod\.(request|reply)\b", user.original):
        user.replace(match.end(), match.end(), [("_now()", 0)])


def plant_log_lines(planter):
    """Of each shape of line: its beginning, its priority, and whether it names the process."""
    source = planter.source("src/client/log.h")
    shape = re.compile(r'^#define (\w+)\(([^)]*)\) +'
                       r'(PVR_LOG_LINE\((\w+), +(.*?), +(\w+), +"(.*?)", +__VA_ARGS__\))$', re.M)
    for match in shape.finditer(source.original):
        name, line, forward, here, priority, head = match[1], match[3], match[4], match[5], match[6], match[7]
        other = {"of_master": "plain", "plain": "of_master"}[forward]
        other_head = head.replace("My master:[%d][%s]", "") if forward == "of_master" else head + "My master:[%d][%s]"
        variants = [("beginning", forward, priority, "~" + head),
                    ("priority", forward, {"error": "info", "info": "debug", "debug": "info"}[priority], head),
                    ("process", other, priority, other_head)]
        tests = [r"^unit/.*LogLine"]
        mutants = planter.number([
            Mutant("log.h", name, column, f"{priority}, {head} -> {new_forward}, {new_priority}, {new_head}", tests,
                   text=f'PVR_LOG_LINE({new_forward}, {here}, {new_priority}, "{new_head}", __VA_ARGS__)')
            for column, new_forward, new_priority, new_head in variants])
        chosen = "".join(f"::mutation::active() == {mutant.number} ? {mutant.text} : " for mutant in mutants)
        planted = match[0][:match.start(3) - match.start()] + f"({chosen}{line})"
        source.replace(*match.span(), [(f"#ifdef PVR_PLANTED_LOG_LINES\n{planted}\n#else\n{match[0]}\n#endif", 0)])
    # Only where their test stands: everywhere, they would be most of what there is to compile.
    test = planter.source("tests/unit/client/log_test.cpp")
    test.replace(0, 0, [("#define PVR_PLANTED_LOG_LINES\n", 0)])


def plant_digits(planter):
    """Each character of the two tables of hexadecimal digits."""
    source = planter.source("src/events/hexadecimal.cpp")
    for match in re.finditer(r"^constexpr (std::array<std::uint16_t, 256> (\w+)) = (.*);$", source.original, re.M):
        mutants = [Mutant(match[2], f"character {code}", "value", "a digit is none; what is none, or zero, is sixteen",
                          [r"^unit/.*Hexadecimal"]) for code in range(256)]
        planter.number(mutants)
        changed = f"const {match[1]} = ::mutation::with_entry({match[3]}, {mutants[0].number}, no_digit);"
        source.replace(*match.span(), [(changed, 0)])
    for match in re.finditer(r"^static_assert\((?:first|second)_digits[^;]*;", source.original, re.M):
        source.replace(*match.span(), [("", 0)])  # the tests are to notice by themselves


class RuleRow(Row):
    """One of the functions that make a result of an answer, or an answer of a message."""

    def all_mutants(self):
        for kind in (self.outcomes, self.comparisons, self.log_lines, self.conditions, self.checked_removals):
            kind()
        return self.mutants

    def outcomes(self):
        swapped = {"PS_SUCCESS": "PS_CALL_METHOD_FAILED", "PS_CALL_METHOD_FAILED": "PS_SUCCESS",
                   "true": "false", "false": "true"}
        for match in re.finditer(r"\b(PS_SUCCESS|PS_CALL_METHOD_FAILED|true|false)\b", self.body):
            self.change("outcome", match.span(), swapped[match[0]])
        for match in re.finditer(r"\b(is_delivered_|is_of_type|session\(\)) ?(?=[;?])", self.body):
            for new in ("true", "false"):
                self.change("delivered", match.span(1), new)
        for match in re.finditer(r"Success::(is_\w+)", self.body):
            for success in sorted({"is_one", "is_zero", "is_not_negative"} - {match[1]}):
                self.change("rule", match.span(1), success)
        for match in re.finditer(r"return [^;]*?\b(result_|value|code_)(?=[;) ,])", self.body):
            self.other("value", match.span(1))

    def comparisons(self):
        for match in re.finditer(r"result (==|>=) (\d)", self.body):
            for new in ("result == 0", "result == 1", "result >= 0", "result > 0", "result != 0"):
                self.change("comparison", match.span(), new)

    def checked_removals(self):
        for start, end in statements(self.body):
            # What ends the use of the arguments has no effect on this machine, and none shows on others.
            if re.match(r"(?!va_)[\w.]+\(", self.body[start:end]):
                self.change("effect", (start, end), ";")


def plant_rules(planter):
    """The rules, and the one function that all messages go through."""
    for file, wanted, tests in [("src/client/call.h", RULE, RULE_TESTS),
                                ("src/client/call.cpp", "Call::session_rule$", RULE_TESTS),
                                ("src/client/exchange.cpp", "exchange$|send$|report_type$", EXCHANGE_TESTS)]:
        source = planter.source(file)
        bare = without_comments(source.original)
        found = []
        for name, result, span in functions(bare, ("", "    ")):
            if re.match(wanted, name):
                rules = RuleRow(bare[slice(*span)], {}, f"rules of {file.rpartition('/')[2]}", name, tests)
                found.append((span, result, rules.all_mutants()))
        planter.plant_functions(file, found)
    plant_publication(planter)


def plant_publication(planter):
    """When the service's result is kept for later calls."""
    source = planter.source("src/client/call.h")
    start = source.original.index("HasResult && is_delivered)")
    end = start + len("HasResult && is_delivered")
    mutants = planter.number([Mutant("rules of call.h", "Answer", "result kept", f"HasResult && is_delivered -> {new}",
                                     RULE_TESTS, text=new) for new in ("HasResult", "is_delivered", "false")])
    chosen = "".join(f"::mutation::active() == {mutant.number} ? {mutant.text} : " for mutant in mutants)
    source.replace(start, end, [(f"{chosen}HasResult && is_delivered", 0)])


def plant(planter):
    plant_wire(planter)
    plant_letters(planter)
    plant_log_lines(planter)
    plant_digits(planter)
    plant_rules(planter)
