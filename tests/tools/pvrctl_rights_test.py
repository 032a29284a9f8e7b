"""What pvrctl tells of a recording's viewing rights, and of the texts for recordings that failed."""
import gettext
import json
import os
import pathlib
import pty
import re
import subprocess

from pvrctl_case import (DONE, FAILED, HANGS, NOT_FOUND, NOT_RECORDING, OPTIONS, USAGE, PvrctlTest, SandboxedTest,
                         lines, main)

CATALOGUES = pathlib.Path(__file__).resolve().parents[2] / "res" / "locale"
SLOTS = "[custom-int]\ncom.brimmel/featureconf/product.num_of_ci={}\n[value-int]\n333={}\n"
DVB, ISDB, NO_SLOT, ATSC = SLOTS.format(1, 1), SLOTS.format(2, 2), SLOTS.format(0, 1), SLOTS.format(1, 0)
NOT_FOR_RECORDING = "[custom-bool]\ncom.brimmel/featureconf/pvr.pvr_support=false\n"
MODULE = "[conditional-access]\nmodule={}\n"
QUESTIONS = ["parental_blocked", "retention_exceeded", "expired_sections", "thumbnail_type", "thumbnail_valid",
             "content_info"]
UNRESTRICTED = dict(zip(QUESTIONS, [False, False, [], 0, True, {"info_type": 0, "play_count": 0}]))
HANDED_OUT = dict(zip(QUESTIONS, [True, True, None, 0, True, {"info_type": 0, "play_count": 0}]))
NOT_ASKED = {"retention_exceeded", "thumbnail_type", "thumbnail_valid"}  # where the product knows no CI
NO_ANSWER = "there is no conditional-access library, or it did not answer"
THREW = "the conditional-access library threw: the conditional-access module was pulled"


class RightsTest(PvrctlTest):
    def setUp(self):
        super().setUp()
        self.recording = self.folder / "first.srf"
        self.recording.touch()

    def product(self, text):
        file = self.folder / "platform.conf"
        file.write_text(text, encoding="utf-8")
        self.environment["PVR_PLATFORM_CONFIG"] = str(file)

    def told(self, *arguments):
        """The answers alone."""
        found = self.succeed("rights", *arguments)
        self.assertEqual(found.pop("unanswered"), {})
        return {name: found[name] for name in QUESTIONS}

    def unanswered(self):
        """What is told all the same, the reasons by question, and the message."""
        code, output, errors = self.run_pvrctl("rights", self.recording, "--json")
        self.assertEqual((code, list(json.loads(output))),
                         (FAILED, ["file", "standard", "ci_slot", *QUESTIONS, "unanswered"]))
        found = json.loads(output)
        reasons = found.pop("unanswered")
        for name, reason in reasons.items():
            self.assertIsNone(found[name])
            self.assertEqual(reason["handed_out"], HANDED_OUT[name], name)
        return ({name: found[name] for name in QUESTIONS if name not in reasons},
                {name: (reason["reason"], reason["message"]) for name, reason in reasons.items()},
                json.loads(errors)["error"]["message"])


class Rights(RightsTest):
    def test_are_told_of_a_recording(self):
        for line, told in [("", {}),
                           ("parental-blocked=true", {"parental_blocked": True}),
                           ("retention-exceeded=true", {"retention_exceeded": True}),
                           ("expired-sections=60-120", {"expired_sections": [{"start": 60, "end": 120}]}),
                           ("expired-sections=0-0;1-2", {"expired_sections": [{"start": 0, "end": 0}]}),
                           ("thumbnail-type=-7", {"thumbnail_type": -7}),
                           ("thumbnail-valid=false", {"thumbnail_valid": False}),
                           ("info-type=2\nplay-count=255", {"content_info": {"info_type": 2, "play_count": 255}})]:
            with self.subTest(line=line):
                self.product(f"{DVB}{MODULE.format('answers')}[rights */first.srf]\n{line}\n")
                self.assertEqual(self.told("first.srf"), UNRESTRICTED | told)

    def test_are_a_table_for_people(self):
        rights = ("[rights *]\nparental-blocked=true\nretention-exceeded=true\nexpired-sections=60-120;300-360\n"
                  "thumbnail-type=1\nthumbnail-valid=false\ninfo-type=2\nplay-count=1\n")
        self.product(ISDB + MODULE.format("answers") + rights)
        code, output, errors = self.run_pvrctl("rights", "first.srf")
        self.assertEqual((code, errors), (DONE, ""))
        self.assertEqual(lines(output), {
            "file": str(self.recording), "receives": "DVB and ISDB (PVR_DTV_DVB_ISDB)", "CI slot": "yes",
            "parental block": "blocked", "retention limit": "exceeded",
            "expired": "60 s to 120 s; the library tells of the first alone", "thumbnail type": "1",
            "thumbnail": "may not be shown", "content": "type 2, played 1 time"})
        self.product(DVB + MODULE.format("answers"))
        self.assertEqual(list(lines(self.run_pvrctl("rights", "first.srf")[1]).values())[3:], [
            "not blocked", "not exceeded", "none", "0", "may be shown", "type 0, played 0 times"])

    def test_look_the_same_on_a_terminal(self):
        self.product(DVB + MODULE.format("answers"))
        terminal, its_end = pty.openpty()
        self.assertEqual(self.run_pvrctl("rights", "first.srf", stdout=its_end)[0], DONE)
        os.close(its_end)
        with open(terminal, "rb", buffering=0) as screen:
            self.assertEqual(screen.read(65536).decode().replace("\r\n", "\n"),
                             self.run_pvrctl("rights", "first.srf")[1])

    def test_are_those_of_the_recording_whichever_of_its_files_is_named(self):
        (self.folder / "timeshift.tmp").touch()
        (self.folder / "link").symlink_to(self.folder)
        self.product(f"{DVB}{MODULE.format('answers')}[rights {self.folder}/first.srf]\ninfo-type=1\n"
                     f"[rights {self.folder}/timeshift.tmp]\ninfo-type=2\n")
        for path, kind in [("first.srf", 1), ("first.inf", 1), ("link/first.inf", 1), (self.recording, 1),
                           ("timeshift.tmp", 2), ("timeshift.inf", 2)]:
            with self.subTest(path=path):
                self.assertEqual(self.told(path)["content_info"]["info_type"], kind)

    def test_of_a_thumbnail_take_any_position(self):
        self.product(DVB + MODULE.format("answers"))
        for position in -2147483648, 0, 2147483647:
            self.assertEqual(self.told("first.srf", "--position", position), UNRESTRICTED)

    def test_are_not_asked_for_where_the_product_knows_no_ci(self):
        rights = ("[rights *]\nparental-blocked=true\nretention-exceeded=true\nthumbnail-type=1\n"
                  "thumbnail-valid=false\n")
        for product, reason in (NO_SLOT, "the product has no CI slot"), (ATSC, "the product receives ATSC"):
            with self.subTest(reason=reason):
                self.product(product + MODULE.format("answers") + rights)
                self.assertEqual(self.told("first.srf"), UNRESTRICTED | {"parental_blocked": True})
                table = lines(self.run_pvrctl("rights", "first.srf")[1])
                self.assertEqual([label for label, text in table.items() if text.endswith("; not asked: " + reason)],
                                 ["retention limit", "thumbnail type", "thumbnail"])

    def test_name_the_product(self):
        for product, standard, has_ci in [(DVB, {"code": 1, "name": "PVR_DTV_DVB"}, True),
                                          (ATSC, {"code": 0, "name": "PVR_DTV_ATSC"}, True),
                                          (ISDB, {"code": 2, "name": "PVR_DTV_DVB_ISDB"}, True),
                                          (NO_SLOT, {"code": 1, "name": "PVR_DTV_DVB"}, False),
                                          (SLOTS.format(1, 9), {"code": 9, "name": None}, True)]:
            self.product(product + MODULE.format("answers"))
            found = self.succeed("rights", "first.srf")
            self.assertEqual((found["file"], found["standard"], found["ci_slot"]),
                             (str(self.recording), standard, has_ci))


class RightsUnanswered(RightsTest):
    def test_say_why(self):
        for module, reason in [("missing", ("no-answer", NO_ANSWER)), ("refuses", ("no-answer", NO_ANSWER)),
                               ("throws", ("threw", THREW))]:
            for product in DVB, NO_SLOT, ATSC:
                with self.subTest(module=module, product=product):
                    self.product(product + MODULE.format(module) + "[rights *]\nparental-blocked=false\n")
                    answered = {} if product == DVB else {name: UNRESTRICTED[name] for name in NOT_ASKED}
                    told, reasons, message = self.unanswered()
                    self.assertEqual((told, reasons), (
                        answered, {name: reason for name in QUESTIONS if name not in answered}))
                    self.assertEqual(message, f"{len(reasons)} of 6 questions have no answer: {reason[1]}. "
                                              "PVR_LOG=stderr tells more")

    def test_say_it_to_people_and_what_applications_get(self):
        self.product(DVB)
        code, output, errors = self.run_pvrctl("rights", "first.srf")
        self.assertEqual((code, "6 of 6" in errors), (FAILED, True))
        self.assertEqual(list(lines(output).values())[3:], [
            f"no answer: {NO_ANSWER}. Applications get: {what}"
            for what in ("blocked", "exceeded", "nothing", "0", "may be shown", "type 0, played 0 times")])

    def test_say_when_the_product_does_not_record(self):
        self.product(NOT_FOR_RECORDING + DVB + MODULE.format("answers"))
        code, output, errors = self.run_pvrctl("rights", "first.srf", "--json")
        found = json.loads(output)
        self.assertEqual((code, found.pop("unanswered")), (NOT_RECORDING, {
            "expired_sections": {"reason": "not-recording", "message": "the product does not record",
                                 "handed_out": None}}))
        self.assertEqual({name: found[name] for name in QUESTIONS}, UNRESTRICTED | {"expired_sections": None})
        self.assertEqual(json.loads(errors)["error"]["message"], "this product does not record")

    def test_need_a_recording(self):
        self.product(DVB + MODULE.format("answers"))
        (self.folder / "folder.srf").mkdir()
        for name in "missing.srf", "missing.inf", "missing/first.srf", "/dev/null/first.srf", "":
            self.assertIn("': No", self.fail_with(NOT_FOUND, "rights", name))
        for name in "first.ts", "first", "x" * 300 + ".srf", os.fsdecode(b"\xff.srf"):
            self.fail_with(USAGE, "rights", name)
        self.assertIn("is no regular file", self.fail_with(FAILED, "rights", "folder.srf"))


class RightsOfRecordings(SandboxedTest):
    def test_are_told_of_what_the_service_records_without_asking_it(self):
        recorded = self.succeed("record", "start", 1)["uri"]
        file = self.folder / "platform.conf"
        file.write_text(f"{DVB}{MODULE.format('answers')}[rights {recorded}]\ninfo-type=1\n[rights *]\ninfo-type=2\n",
                        encoding="utf-8")
        self.environment["PVR_PLATFORM_CONFIG"] = str(file)
        before = self.control("ListCalls", 0)
        for path, kind in (recorded, 1), (self.recording, 2):
            self.assertEqual(self.succeed("rights", path)["content_info"]["info_type"], kind)
        self.assertEqual(self.control("ListCalls", 0), before)


class ErrorTexts(PvrctlTest):
    OWN = [*range(2, 19), *range(100, 105), *range(150, 162), 200, 202, *range(250, 261)]
    UNKNOWN = "SID_AN_UNKNOWN_ERROR_HAS_OCCURRED_WHILE_RECORDING"
    COPYRIGHT = "SID_NOT_RECORD_COPYRIGHT_BROADCASTING_MSG"
    ID = re.compile("SID_|TV_S")

    def setUp(self):
        super().setUp()
        for name in "LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG":
            self.environment.pop(name, None)

    def text(self, language, message):
        """As the catalogue's source has it."""
        compiled = self.folder / (language + ".mo")
        subprocess.run(["msgfmt", "-o", compiled, CATALOGUES / (language + ".po")], check=True, timeout=HANGS,
                       stderr=subprocess.DEVNULL)
        with open(compiled, "rb") as file:
            found = gettext.GNUTranslations(file).gettext(message)
        self.assertNotEqual(found, message)
        return found

    def test_are_those_of_the_catalogue_in_each_language(self):
        for language in sorted(path.stem for path in CATALOGUES.glob("*.po")):
            for code, message, is_own in [(257, self.COPYRIGHT, True), (2, "TV_SID_FAIL_TO_RECORD", True),
                                          (260, "SID_CANNOT_START_RECORDING_BECAUSE_THE_SERVICE_IS_NOT_AVAILABLE",
                                           True),
                                          (1, self.UNKNOWN, False), (-2147483648, self.UNKNOWN, False),
                                          (2147483647, self.UNKNOWN, False)]:
                with self.subTest(language=language, code=code):
                    self.assertEqual(self.succeed("error-text", code, "--lang", language), {
                        "code": code, "language": language, "text": self.text(language, message), "own": is_own})

    def test_are_a_table_for_people(self):
        german = self.text("de", self.COPYRIGHT)
        self.assertEqual(self.run_pvrctl("error-text", 257, "--lang", "de"),
                         (DONE, f"code      257\nlanguage  de\ntext      {german}\n", ""))
        self.assertEqual(lines(self.run_pvrctl("error-text", -1)[1]), {
            "code": "-1", "language": "en", "text": self.text("en", self.UNKNOWN),
            "of its own": "no: this stands for every error that is unknown"})

    def test_are_empty_for_what_is_no_error(self):
        self.assertEqual(self.succeed("error-text", 0, "--lang", "fr"),
                         {"code": 0, "language": "fr", "text": "", "own": False})
        self.assertEqual(lines(self.run_pvrctl("error-text", 0)[1])["text"], "none: this code is no error")

    def test_are_listed(self):
        for language in "en", "es":
            listed = self.succeed("error-text", "--all", "--lang", language)
            self.assertEqual((listed["language"], listed["count"]), (language, len(self.OWN)))
            self.assertEqual([row["code"] for row in listed["texts"]], self.OWN)
            self.assertNotIn(self.text(language, self.UNKNOWN), [row["text"] for row in listed["texts"]])
            self.assertEqual([text for row in listed["texts"] if self.ID.match(text := row["text"])], [])
            code, output, errors = self.run_pvrctl("error-text", "--all", "--lang", language)
            self.assertEqual((code, errors), (DONE, ""))
            self.assertEqual(output.splitlines(), [f"{row['code']:<3}  {row['text']}" for row in listed["texts"]])

    def test_are_in_the_users_language(self):
        for language, environment in [
                ("en", {}), ("en", {"LANG": ""}), ("en", {"LANG": "C"}), ("en", {"LANG": "POSIX"}),
                ("en", {"LANG": "C.UTF-8"}), ("en", {"LANG": "C", "LANGUAGE": "de"}),
                ("en", {"LC_ALL": "C", "LANG": "de_DE.UTF-8", "LANGUAGE": "fr"}),
                ("de", {"LANG": "de_DE.UTF-8"}), ("de", {"LANG": "de_AT@euro"}), ("de", {"LANG": "de"}),
                ("fr", {"LANG": "de_DE.UTF-8", "LC_MESSAGES": "fr_FR.UTF-8"}),
                ("es", {"LANG": "de_DE.UTF-8", "LC_MESSAGES": "fr_FR.UTF-8", "LC_ALL": "es_ES.UTF-8"}),
                ("de", {"LC_ALL": "", "LANG": "de_DE.UTF-8"}), ("fr", {"LANG": "de_DE.UTF-8", "LANGUAGE": "fr"}),
                ("fr", {"LANG": "C.UTF-8", "LANGUAGE": "fr"}), ("es", {"LANG": "ja_JP.UTF-8", "LANGUAGE": "xx::es:fr"}),
                ("en", {"LANG": "ja_JP.UTF-8"}), ("en", {"LANG": "../../de", "LANGUAGE": "/de:.:"})]:
            with self.subTest(environment=environment):
                found = self.succeed("error-text", 257, env=self.environment | environment)
                self.assertEqual(found["text"], self.text(language, self.COPYRIGHT))

    def test_are_in_the_language_that_is_asked_for_whatever_the_users_is(self):
        for environment in {}, {"LC_ALL": "C", "LANGUAGE": "es"}, {"LC_ALL": "es_ES.UTF-8", "LANGUAGE": "es:en"}:
            with self.subTest(environment=environment):
                found = self.succeed("error-text", 257, "--lang", "fr_CA.UTF-8", env=self.environment | environment)
                self.assertEqual(found["text"], self.text("fr", self.COPYRIGHT))

    def test_are_not_found_in_a_language_without_a_catalogue(self):
        for language in "ja", "C", "POSIX", "zz_ZZ", "x" * 300:
            for arguments in [257], [0], [1], ["--all"]:
                with self.subTest(language=language, arguments=arguments):
                    self.assertEqual(self.fail_with(NOT_FOUND, "error-text", *arguments, "--lang", language),
                                     f"there are no texts in '{language}'")

    def test_do_not_change_what_else_is_told(self):
        with open("/dev/full", "w", encoding="utf-8") as full:
            errors = self.run_pvrctl("error-text", 257, "--lang", "de", stdout=full)[2]
        self.assertEqual(" ".join(errors.split()), "pvrctl: cannot write to standard output: No space left on device")

    def test_take_a_product_that_records(self):
        file = self.folder / "platform.conf"
        file.write_text(NOT_FOR_RECORDING, encoding="utf-8")
        self.environment["PVR_PLATFORM_CONFIG"] = str(file)
        for arguments in [257], ["--all"]:
            self.assertEqual(self.fail_with(NOT_RECORDING, "error-text", *arguments), "this product does not record")


if __name__ == "__main__":
    main()
