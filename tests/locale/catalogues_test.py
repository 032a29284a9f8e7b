"""Every catalogue says everything that the template asks for, and nothing that would not fit."""
import pathlib
import sys
import unittest

import polib

LOCALE = pathlib.Path(sys.argv.pop(1))
LANGUAGES = ["de", "en", "es", "fr"]
LONGEST = 254  # bytes that a caller's buffer takes
TEMPLATE = polib.pofile(str(LOCALE / "pvr-service-api.pot"))
IDS = [entry.msgid for entry in TEMPLATE]


def catalogue(language):
    return polib.pofile(str(LOCALE / f"{language}.po"))


class Catalogues(unittest.TestCase):
    def test_there_is_one_for_each_language_and_no_other(self):
        self.assertEqual(sorted(path.stem for path in LOCALE.glob("*.po")), LANGUAGES)

    def test_the_template_says_of_each_text_when_it_is_shown(self):
        self.assertEqual(len(IDS), len(set(IDS)))
        for entry in TEMPLATE:
            self.assertRegex(entry.comment, r"^(Codes? \d|All other codes)", entry.msgid)
            self.assertEqual(entry.msgstr, "", entry.msgid)

    def test_none_lacks_a_text_or_has_one_that_nobody_asks_for(self):
        for language in LANGUAGES:
            with self.subTest(language=language):
                entries = catalogue(language)
                self.assertEqual([entry.msgid for entry in entries], IDS)
                self.assertEqual([entry.msgid for entry in entries if not entry.translated()], [])
                self.assertEqual([entry.comment for entry in entries], [entry.comment for entry in TEMPLATE])

    def test_no_text_is_longer_than_a_buffer_takes(self):
        for language in LANGUAGES:
            for entry in catalogue(language):
                self.assertLessEqual(len(entry.msgstr.encode()), LONGEST, f"{language}: {entry.msgid}")

    def test_what_no_native_reader_has_seen_is_marked_as_a_draft(self):
        for language in LANGUAGES:
            head = catalogue(language)
            self.assertEqual(head.metadata["Language"], language)
            self.assertEqual("A draft: it awaits a native reader." in head.header, language != "en", language)


if __name__ == "__main__":
    unittest.main(verbosity=2)
