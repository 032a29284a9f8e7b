"""The interface description and the glue made from it say what wire.txt says, in its order, and no more."""
import argparse
import collections
import difflib
import pathlib
import re
import subprocess
import sys
import unittest
import xml.etree.ElementTree as ElementTree

OPTIONS = argparse.Namespace()
KNOWN = {  # every element and attribute that may occur
    "node": set(),
    "interface": {"name"},
    "method": {"name"},
    "signal": {"name"},
    "arg": {"name", "type", "direction"},
}
DIRECTIONS = {"method": ("in", "out"), "signal": (None,)}


def committed():
    lines = pathlib.Path(OPTIONS.wire).read_text(encoding="utf-8").splitlines()
    return [re.sub(r"\s+", " ", line) for line in lines if line and not line.startswith("#")]


def members(text):
    """The lines of wire.txt that an XML description amounts to, and whatever else it contains."""
    node = ElementTree.fromstring(text)
    foreign = []
    for element in node.iter():
        if element.tag not in KNOWN:
            foreign.append(f"<{element.tag} {element.attrib}>")
        else:
            foreign += [f"<{element.tag} {name}=>" for name in set(element.attrib) - KNOWN[element.tag]]
    interfaces = [interface.get("name") for interface in node.findall("interface")]
    if interfaces != ["org.vexan.tv.pvr"]:
        foreign.append(f"interfaces: {interfaces}")

    lines = []
    for member in node.iterfind("interface/*"):
        arguments = collections.defaultdict(list)
        for argument in member.iterfind("arg"):
            arguments[argument.get("direction")].append(f"{argument.get('name')}:{argument.get('type')}")
        lists = [f"({' '.join(arguments.pop(direction, []))})" for direction in DIRECTIONS.get(member.tag, ())]
        lines.append(f"{member.tag} {member.get('name')} {' -> '.join(lists)}")
        foreign += [f"{member.get('name')}: arguments of direction {direction}" for direction in arguments]
    return lines, foreign


class Interface(unittest.TestCase):
    maxDiff = None

    def assert_as_committed(self, text):
        found, foreign = members(text)
        self.assertEqual(foreign, [])
        if found != committed():
            diff = difflib.unified_diff(committed(), found, "wire.txt", "the interface", n=0, lineterm="")
            self.fail("\n".join(diff))

    def assert_refused(self, old, new):
        text = pathlib.Path(OPTIONS.xml).read_text(encoding="utf-8")
        self.assertEqual(text.count(old), 1, old)
        with self.assertRaises(self.failureException):
            self.assert_as_committed(text.replace(old, new))

    def test_the_committed_table_is_whole(self):
        kinds = collections.Counter(line.split()[0] for line in committed())
        self.assertEqual(kinds, {"method": 106, "signal": 2})
        form = r"(method \w+ \(([^)(]|\([^)(]*\))*\) -> \(([^)(]|\([^)(]*\))*\)|signal \w+ \([^)(]*\))"
        for line in committed():
            self.assertRegex(line, f"^{form}$")

    def test_the_description_is_the_committed_table(self):
        self.assert_as_committed(pathlib.Path(OPTIONS.xml).read_text(encoding="utf-8"))

    def test_the_generated_glue_is_the_committed_table(self):
        done = subprocess.run([OPTIONS.program], check=True, stdout=subprocess.PIPE, text=True)
        self.assert_as_committed(done.stdout)

    def test_two_methods_that_changed_places_are_noticed(self):
        text = pathlib.Path(OPTIONS.xml).read_text(encoding="utf-8")
        swapped = text.replace('"play_stop"', '"@"').replace('"play_pause"', '"play_stop"')
        swapped = swapped.replace('"@"', '"play_pause"')
        self.assertNotEqual(text, swapped)
        with self.assertRaises(self.failureException):
            self.assert_as_committed(swapped)

    def test_a_changed_argument_name_is_noticed(self):
        self.assert_refused('"startPos"', '"start_pos"')

    def test_a_changed_type_is_noticed(self):
        self.assert_refused('"(tiii)"', '"(tiiu)"')

    def test_a_changed_direction_is_noticed(self):
        self.assert_refused('name="result" type="t" direction="in"', 'name="result" type="t" direction="out"')

    def test_a_property_is_noticed(self):
        self.assert_refused("</interface>", '<property name="planted" type="i" access="read"/></interface>')

    def test_an_annotation_is_noticed(self):
        self.assert_refused('<method name="mkdir">', '<method name="mkdir">'
                            '<annotation name="org.freedesktop.DBus.Method.NoReply" value="true"/>')


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    for option in "xml", "wire", "program":
        parser.add_argument("--" + option, required=True)
    _, rest = parser.parse_known_args(namespace=OPTIONS)
    unittest.main(argv=sys.argv[:1] + rest, verbosity=2)
