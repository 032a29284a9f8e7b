"""pvrctl wait: every state is waited for until it is there, and how a wait ends that is in vain."""
import json
import signal

from pvrctl_case import (DONE, HANGS, NOT_RUNNING, PLAY, TIME_OUT, USAGE, PvrctlTest, SandboxedTest, lines, main,
                         wait_until)


class WaitTest(SandboxedTest):
    def begin_wait(self, *arguments):
        """A wait under way, of which the service has been asked already."""
        before = len(self.succeed("sim", "calls")["calls"])
        run = self.begin("--json", "wait", "--until", *arguments)
        self.addCleanup(run.wait, HANGS)
        self.addCleanup(run.kill)
        self.addCleanup(run.stderr.close)
        self.addCleanup(run.stdout.close)
        wait_until(lambda: len(self.succeed("sim", "calls")["calls"]) > before, "the wait has asked the service")
        self.assertIsNone(run.poll())
        return run

    def end(self, run):
        code, output, errors = self.finish(run)
        self.assertEqual((code, errors), (DONE, ""))
        return json.loads(output)


class Wait(WaitTest):
    def test_ends_with_the_state_of_a_channel(self):
        of_channel, of_any = self.begin_wait("recording", 1), self.begin_wait("recording")
        self.succeed("record", "start", 2)
        self.assertEqual(self.end(of_any), {"state": "recording", "service_id": None})
        self.assertIsNone(of_channel.poll())
        self.succeed("record", "start", 1)
        self.assertEqual(self.end(of_channel), {"state": "recording", "service_id": 1})
        of_channel, of_any = self.begin_wait("idle", 1), self.begin_wait("idle")
        self.succeed("record", "stop", 1)
        self.assertEqual(self.end(of_channel), {"state": "idle", "service_id": 1})
        self.assertIsNone(of_any.poll())
        self.succeed("record", "stop", 2)
        self.assertEqual(self.end(of_any), {"state": "idle", "service_id": None})

    def test_ends_with_the_state_of_a_playback(self):
        handle = self.succeed("handle", "get")["handle"]
        for state, of, arguments in [("playing", handle, ["start", self.recording, "--handle", handle]),
                                     ("paused", None, ["pause", handle]), ("playing", None, ["resume", handle]),
                                     ("paused", handle, ["pause", handle]), ("stopped", handle, ["stop", "--all"])]:
            with self.subTest(state=state, of=of):
                run = self.begin_wait(state, *([] if of is None else [of]))
                self.succeed("play", *arguments)
                self.assertEqual(self.end(run), {"state": state, "handle": of})

    def test_a_state_that_is_there_is_not_waited_for(self):
        self.start()
        for state, *arguments in ["service"], ["playing"], ["idle", 1], ["stopped", 77]:
            self.assertEqual(self.succeed("wait", "--until", state, *arguments, "--timeout", 0)["state"], state)
        self.assertEqual(lines(self.run_pvrctl("wait", "--until", "playing", 1)[1]), {"playing": "handle 1"})

    def test_a_state_that_nobody_tells_of_is_seen_all_the_same(self):
        for name in "result_to_apps", "send_pvr_signal_to_apps":
            self.succeed("sim", "fault", "add", "drop", name)
        run = self.begin_wait("playing")
        self.assertEqual(self.state(self.start())[0], PLAY)
        self.end(run)

    def test_a_service_that_is_away_is_waited_for(self):
        self.control("Vanish", 0)
        waits = [self.begin("--json", "wait", "--until", state) for state in ("service", "recording")]
        self.addCleanup(waits[1].kill)
        self.assertIn("'service' of any was not reached within 0 s",
                      self.fail_with(TIME_OUT, "wait", "--until", "service", "--timeout", 0))
        self.fail_with(TIME_OUT, "wait", "--until", "idle", "--timeout", 0)
        self.control("Return")
        self.assertEqual(self.end(waits[0])["state"], "service")
        self.succeed("record", "start", 1)
        self.end(waits[1])

    def test_time_that_is_up_is_told(self):
        self.assertEqual(self.fail_with(TIME_OUT, "wait", "--until", "recording", 1, "--timeout", 0),
                         "'recording' of channel 1 was not reached within 0 s")
        self.assertEqual(self.fail_with(TIME_OUT, "wait", "--until", "paused", 7, "--timeout", 1),
                         "'paused' of handle 7 was not reached within 1 s")

    def test_signals_end_it(self):
        for number in signal.SIGINT, signal.SIGTERM:
            run = self.begin_wait("recording", 1)
            run.send_signal(number)
            self.assertEqual(self.finish(run), (128 + number, "", ""))


class WaitAlone(PvrctlTest):
    def test_takes_a_bus(self):
        for state in "service", "idle", "playing":
            self.assertIn("the system bus cannot be reached", self.fail_with(NOT_RUNNING, "wait", "--until", state))

    def test_what_is_wrong_is_told(self):
        for arguments, message in [
                ([], "--until is required"),
                (["--until", "wobble"],
                 "--until: 'wobble' is none of service, recording, idle, playing, paused, stopped"),
                (["--until", "recording", "x"], "'x' is no whole number"),
                (["--until", "recording", "18446744073709551616"], "is not between 0 and 18446744073709551615"),
                (["--until", "playing", "x"], "ID: 'x' is no whole number"),
                (["--until", "playing", "2147483648"], "is not between -2147483648 and 2147483647"),
                (["--until", "service", 1], "ID: there is one service, so '1' is not expected"),
                (["--until", "service", "--timeout", -1], "--timeout: '-1' is not between 0 and")]:
            with self.subTest(arguments=arguments):
                self.assertIn(message, self.fail_with(USAGE, "wait", *arguments))


if __name__ == "__main__":
    main()
