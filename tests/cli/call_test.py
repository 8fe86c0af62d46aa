"""kelpctl call: what it sends, what it prints, what it exits with."""

import json
import os
import signal
import unittest

from support.programs import Kelpctl, ProgramTest, Server

COMMANDS = {
    "name": "answers",
    "procType": 77,
    "commands": [
        {"name": "echo", "code": 1, "help": "answers its arguments", "arguments": {"any": "x"}},
        {"name": "fail", "code": 2},
        {"name": "tables", "code": 3},
    ],
    "results": {"30": "thirty"},
}


class CallTest(ProgramTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.commands = os.path.join(cls.folder, "commands.json")
        with open(cls.commands, "w", encoding="utf-8") as file:
            json.dump(COMMANDS, file)
        cls.kelpctl = Kelpctl(os.environ["KELPCTL"], cls.run_dir, [cls.commands])
        cls.server = cls.start_server()

    @classmethod
    def tearDownClass(cls):
        cls.server.kill()
        super().tearDownClass()

    @classmethod
    def start_server(cls, run_dir=None):
        return Server([os.environ["ANSWERING_SERVER"], run_dir or cls.run_dir], "ready")

    def call(self, *arguments, **more):
        return self.kelpctl.run("call", *arguments, **more)

    # What is sent.

    def test_pairs_are_typed_and_echoed_as_a_list(self):
        status, out, err = self.call(
            "answers", "echo", "n=5", "d=0.5", "t=x y", "q:=\"5\"", "zeros=007", "--user", "9")
        self.assertEqual((status, err), (0, b""))
        self.assertEqual(
            out.decode(), "d      d 0.5\nn      i 5\nq      t 5\nt      t x y\nuser   9\n"
            "zeros  t 007\n")

    def test_arguments_come_from_a_file_too(self):
        path = os.path.join(self.folder, "arguments.json")
        with open(path, "w", encoding="utf-8") as file:
            file.write('{"a": 1, "b": "Zürich"}')
        status, out, _ = self.call("77", "1", "--args", path, "c=2")
        self.assertEqual(status, 0)
        self.assertEqual(out.decode(), "a     i 1\nb     t Zürich\nc     i 2\nuser  0\n")

    def test_arguments_come_from_standard_input(self):
        status, out, _ = self.call("77", "1", "--args", "-", stdin=b'{"a": true}')
        self.assertEqual((status, out), (0, b"a     i 1\nuser  0\n"))

    def test_target_may_carry_a_handle(self):
        self.assertEqual(self.call("answers.1", "echo")[0], 0)
        status, out, err = self.call("answers.2", "echo")
        self.assertEqual((status, out), (3, b""))
        self.assertEqual(self.one_line(err), "kelpctl: answers (77.2) is not running")

    def test_run_dir_option_goes_before_the_environment(self):
        status, _, err = self.kelpctl.run(
            "call", "77", "1", "--run-dir", self.run_dir, env={"KELP_RUN_DIR": "/nonexistent"})
        self.assertEqual((status, err), (0, b""))

    def test_run_dir_without_the_server(self):
        status, _, err = self.call("answers", "echo", "--run-dir", self.folder)
        self.assertEqual(status, 3)
        self.assertEqual(self.one_line(err), "kelpctl: answers (77) is not running")

    # What is printed.

    def test_tables_stand_under_one_another(self):
        status, out, err = self.call("answers", "tables")
        self.assertEqual((status, err), (0, b""))
        head = "text      number\n--------  ------\n"
        rows = "東京        1000\n\\x1b[2J     1000\n\\xff\\x00    1000\n3 rows\n"
        self.assertEqual(
            out.decode(),
            "##retCodeEx  7\n##ver        1.2\n\nfirst:\n" + head + rows + "\ntable 1:\n" + head +
            rows)

    def test_rows_may_be_limited(self):
        _, out, _ = self.call("answers", "tables", "--rows", "1")
        self.assertEqual(out.decode().count("東京"), 2)
        self.assertEqual(out.decode().count("... 1 of 3 rows\n"), 2)

    def test_json_is_valid_whatever_the_octets(self):
        status, out, _ = self.call("answers", "tables", "--json")
        self.assertEqual(status, 0)
        answer = json.loads(out)
        rows = [
            {"text": "東京", "number": 1000},
            {"text": "\x1b[2J", "number": 1000},
            {"text": {"octets": "ff00"}, "number": 1000},
        ]
        columns = ["text", "number"]
        self.assertEqual(answer, {
            "retCode": 0, "retCodeEx": 7, "ver": "1.2",
            "tables": [{"name": "first", "columns": columns, "rows": rows},
                       {"name": "", "columns": columns, "rows": rows}]})

    def test_verbose_says_what_went_over_the_wire(self):
        status, _, err = self.call("answers", "echo", "a=1", "--verbose")
        self.assertEqual(status, 0)
        sent, received = err.decode().splitlines()
        self.assertRegex(
            sent, r"^-> echo \(1\) to answers \(77\): \d+ octets: "
            r"30 SEQUENCE \{ 02 INTEGER \(1\), a1 \[1\] \(\d+\) \}$")
        self.assertRegex(
            received, r"^<- [\d.]+ ms later: \d+ octets: "
            r"30 SEQUENCE \{ 02 INTEGER \(1\), a2 \[2\] \(\d+\) \}$")

    # What a result code becomes.

    def test_result_codes_become_exit_statuses(self):
        for code, expected in ((10, 10), (30, 30), (125, 125), (1, 1), (9, 1), (126, 1),
                               (256, 1), (-1, 1), (2147483647, 1)):
            with self.subTest(code=code):
                status, out, err = self.call("answers", "fail", f"code={code}")
                self.assertEqual((status, out), (expected, b""))
                self.assertIn(f"kelpctl: fail (2): result {code}", self.one_line(err))

    def test_result_text_comes_from_the_answer(self):
        _, _, err = self.call("answers", "fail", "code=30", "text=too hot", "item=slot 7")
        self.assertEqual(self.one_line(err), "kelpctl: fail (2): result 30: too hot: slot 7")

    def test_result_text_comes_from_the_commands_file_else(self):
        _, _, err = self.call("answers", "fail", "code=30")
        self.assertEqual(self.one_line(err), "kelpctl: fail (2): result 30: thirty")

    def test_result_text_cannot_act_on_the_terminal(self):
        _, _, err = self.call("answers", "fail", "code=30", "text=\x1b[2J\n", "item=x")
        self.assertIn("\\x1b[2J\\n", self.one_line(err))

    def test_json_of_a_failure_is_printed_too(self):
        status, out, err = self.call("answers", "fail", "code=30", "text=t", "item=i", "--json")
        self.assertEqual(status, 30)
        self.assertEqual(json.loads(out)["retCode"], 30)
        self.assertEqual(self.one_line(err), "kelpctl: fail (2): result 30: t: i")

    # What else may happen to a call.

    def test_unknown_code_is_the_servers_refusal(self):
        status, out, err = self.call("answers", "4711")
        self.assertEqual((status, out), (5, b""))
        self.assertEqual(self.one_line(err), "kelpctl: answers (77) knows no command 4711")

    def test_handler_that_throws(self):
        status, _, err = self.call("answers", "4")
        self.assertEqual(status, 5)
        self.assertEqual(self.one_line(err), "kelpctl: 4 failed inside answers (77)")
        self.assertEqual(self.call("answers", "echo")[0], 0, "the server lives on")

    def test_request_that_the_server_cannot_decode(self):
        status, _, err = self.call("answers", "8")
        self.assertEqual(status, 5)
        self.assertEqual(
            self.one_line(err), "kelpctl: answers (77) could not decode the request 8")

    def test_answer_that_is_no_common_response(self):
        status, _, err = self.call("answers", "6")
        self.assertEqual(status, 6)
        self.assertEqual(
            self.one_line(err), "kelpctl: the answer of answers (77) to 6 is no common response")

    def test_no_answer_in_time(self):
        status, _, err = self.call("answers", "7", "--timeout", "1")
        self.assertEqual(status, 4)
        self.assertEqual(self.one_line(err), "kelpctl: answers (77) did not answer 7 within 1 s")

    def test_arguments_beyond_a_request(self):
        status, _, err = self.call("answers", "echo", "t=" + "x" * 100000)
        self.assertEqual(status, 2)
        self.assertEqual(
            self.one_line(err), "kelpctl: the arguments of echo (1) take more than 100000 octets")

    def test_server_that_ends_meanwhile(self):
        run_dir = os.path.join(self.folder, "run2")
        os.mkdir(run_dir, 0o700)
        with self.start_server(run_dir):
            status, _, err = self.call("answers", "5", "--run-dir", run_dir)
        self.assertEqual(status, 3)
        self.assertEqual(
            self.one_line(err), "kelpctl: answers (77) ended before it answered 5")

    def test_server_that_was_killed(self):
        run_dir = os.path.join(self.folder, "run3")
        os.mkdir(run_dir, 0o700)
        server = self.start_server(run_dir)
        self.assertEqual(server.kill(signal.SIGKILL), -signal.SIGKILL)
        status, _, err = self.call("answers", "echo", "--run-dir", run_dir)
        self.assertEqual(status, 3)
        self.assertEqual(self.one_line(err), "kelpctl: answers (77) is not running")

    def test_server_that_is_not_running(self):
        status, out, err = self.call("4711", "1")
        self.assertEqual((status, out), (3, b""))
        self.assertEqual(self.one_line(err), "kelpctl: process 4711 is not running")


if __name__ == "__main__":
    unittest.main()
