"""kelpctl paraset: JSON to octets, octets to JSON, octets for people to look at."""

import json
import os
import pty
import stat
import unittest

from support.programs import Kelpctl, ProgramTest

EXAMPLES = os.path.join(os.environ["ROOT"], "examples", "codec")
DESC = os.path.join(EXAMPLES, "elements.bcp")


class ParaSetTest(ProgramTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.kelpctl = Kelpctl(os.environ["KELPCTL"], cls.run_dir)

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, contents):
        with open(self.path(name), "wb") as file:
            file.write(contents if isinstance(contents, bytes) else contents.encode())
        return self.path(name)

    def read(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def run_ok(self, *arguments, stdin=b"", **more):
        stdin = stdin.encode() if isinstance(stdin, str) else stdin
        status, out, err = self.kelpctl.run("paraset", *arguments, stdin=stdin, **more)
        self.assertEqual((status, err), (0, b""))
        return out

    def refused(self, expected_status, *arguments, stdin=b"", **more):
        """The one line on standard error; nothing may be on standard output."""
        stdin = stdin.encode() if isinstance(stdin, str) else stdin
        status, out, err = self.kelpctl.run("paraset", *arguments, stdin=stdin, **more)
        self.assertEqual((status, out), (expected_status, b""), err)
        line = self.one_line(err)
        self.assertTrue(line.startswith("kelpctl: "), line)
        return line

    def hex_of(self, text, *arguments):
        return self.run_ok("encode", "--hex", *arguments, stdin=text).decode().split()

    # Without a description.

    def test_values_without_a_description(self):
        cases = [
            ("7", "02 01 07"),
            ("-129", "02 02 ff 7f"),
            ("-2147483648", "02 04 80 00 00 00"),
            ("0.5", "09 03 80 ff 01"),
            ("1.0", "09 03 80 00 01"),
            ("-0.0", "09 01 43"),
            ('{"$double": "Infinity"}', "09 01 40"),
            ('{"$double": "-Infinity"}', "09 01 41"),
            ('{"$double": "NaN"}', "09 01 42"),
            ('"Z\\u00fcrich"', "04 07 5a c3 bc 72 69 63 68"),
            ('"a\\u0000b"', "04 03 61 00 62"),
            ('{"$bytes": "ff00"}', "04 02 ff 00"),
            ('[1, "x"]', "30 83 00 00 06 02 01 01 04 01 78"),
            ('{"a": 1}', "30 83 00 00 0b 30 83 00 00 06 04 01 61 02 01 01"),
            ('{"$$a": {}}', "30 83 00 00 0e 30 83 00 00 09 04 02 24 61 30 83 00 00 00"),
            ('{"$bytes:ff": 1}', "30 83 00 00 0b 30 83 00 00 06 04 01 ff 02 01 01"),
            ("{}", "30 83 00 00 00"),
        ]
        for text, octets in cases:
            with self.subTest(text=text):
                self.assertEqual(self.hex_of(text), octets.split())
                back = self.run_ok("decode", "--hex", stdin=octets)
                self.assertEqual(json.loads(back), json.loads(text))

    def test_what_no_undescribed_form_carries(self):
        cases = [
            ("null", "$: null cannot be carried here"),
            ("[]", "$: would read back as a structure, not as a list"),
            ("[1, null]", "$[1]: null cannot be carried here"),
            ("[[1]]", "$[0]: a list needs a description here"),
            ('{"a": {"b": 1}}', "$.a: a structure needs a description here"),
            ('{"a": [1]}', "$.a: a list needs a description here"),
            ('{"a": {"$absent": true}}', "$.a: what is absent cannot be carried here"),
            ('{"a": {"$desc": "d", "$value": 1}}', "$.a: the description of a node"),
            ('{"a": {"$name": "b", "$value": 1}}', '$.a: the name "b" cannot be carried'),
            ('{"a b": {"$resource": null}}', '$["a b"]: a resource record is only carried by'),
        ]
        for text, expected in cases:
            with self.subTest(text=text):
                line = self.refused(2, "encode", "--hex", stdin=text)
                self.assertIn("standard input: " + expected, line)

    def test_structures_without_a_description_are_not_dropped_silently(self):
        line = self.refused(6, "decode", "--hex", stdin="30 05 30 03 02 01 07")
        self.assertIn("at offset 4", line)
        line = self.refused(6, "decode", "--hex", stdin="30 08 02 01 07 a0 03 02 01 05")
        self.assertIn("nothing is read of the structure at offset 5", line)

    # By description.

    def test_example_by_description(self):
        for name, key in (("element", "2000"), ("alarms", "2070"), ("branches", "2060"),
                          ("elements", "2040")):
            with self.subTest(name=name):
                source = os.path.join(EXAMPLES, name + ".json")
                octets = self.run_ok("encode", "--desc", DESC, "--key", key, source)
                out = self.run_ok("decode", "--desc", DESC, "--key", key, stdin=octets)
                with open(source, encoding="utf-8") as file:
                    self.assertEqual(json.loads(out), json.load(file))
                again = self.run_ok("encode", "--desc", DESC, "--key", key, stdin=out)
                self.assertEqual(again, octets)

    def test_json_that_does_not_fit_the_description(self):
        cases = [
            ("2000", '{"neId": "7"}', "$.neId: is a text, where an integer is described"),
            ("2000", '{"neId": 1.0}', "$.neId: is a double, where an integer is described"),
            ("2000", '{"nope": 1}', "$.nope: description 2000 has no such member"),
            ("2000", '{"interfaces": [{"index": 1, "x": 2}]}',
             "$.interfaces[0].x: description 2020 has no such member"),
            ("2000", '{"spare": 1}', "$.spare: is an integer, where null is described"),
            ("2000", '{"attributes": {"a": [1]}}', "$.attributes.a: a list needs"),
            ("2000", '{"vendorData": "' + "x" * 126 + '"}',
             "$.vendorData: cannot be encoded: the contents do not fit"),
            ("2010", '{"site": "n", "latitude": 1.0}',
             '$: the member "longitude" is missing; description 2010 demands it'),
            ("2000", '{"neId": 1, "neName": "", "load": 0.0, "location": {"site": "n"}}',
             '$.location: the member "longitude" is missing'),
            ("2010", "[1]", "$: is a list, where a structure is described"),
            ("2041", '{"numbers": [1]}', "$: would read back as a list, not as a structure; its "
             "only member is all that is read: give that list itself"),
        ]
        for key, text, expected in cases:
            with self.subTest(text=text):
                line = self.refused(2, "encode", "--hex", "--desc", DESC, "--key", key, stdin=text)
                self.assertIn("standard input: " + expected, line)

    def test_integer_is_taken_for_a_double(self):
        text = '{"site": "n", "latitude": 1, "longitude": -2}'
        octets = self.run_ok("encode", "--desc", DESC, "--key", "2010", stdin=text)
        out = self.run_ok("decode", "--desc", DESC, "--key", "2010", stdin=octets)
        self.assertIn(b'"latitude": 1.0', out)

    def test_one_way_writes_what_only_others_read(self):
        octets = self.hex_of('{"numbers": [1]}', "--desc", DESC, "--key", "2041", "--one-way")
        self.assertEqual(octets, "30 83 00 00 08 30 83 00 00 03 02 01 01".split())

    def test_installed_description_is_the_default(self):
        folder = os.path.join(self.folder, "oss", "rtsp", "DRKFrame", "drk", "frame", "conf")
        os.makedirs(folder)
        self.write(os.path.join(folder, "MCDB..bms_desc_Asn1ParaDesc.bcp"), "1100 0 id 2 -1 -1\n")
        root = {"OSS_ROOT": os.path.join(self.folder, "oss")}
        out = self.run_ok("encode", "--hex", "--key", "1100", stdin='{"id": 7}', env=root)
        self.assertEqual(out.split(), b"30 83 00 00 03 02 01 07".split())
        line = self.refused(2, "encode", "--hex", "--key", "1100", stdin='{"id": 7}')
        self.assertIn("a description is needed: give --desc FILE, or set OSS_ROOT", line)

    def test_description_file_that_is_missing(self):
        line = self.refused(2, "decode", "--desc", "/nonexistent", "--key", "2000", stdin=b"0")
        self.assertEqual(line, "kelpctl: /nonexistent: No such file or directory")

    def test_description_file_with_malformed_lines(self):
        bad = self.write("bad.bcp", "# fine\n1100 0 id 2 -1 -1\n1100 0 id 2 -1\n\na b c d e f g\n")
        line = self.refused(2, "decode", "--desc", bad, "--key", "1100", stdin=b"0")
        self.assertEqual(line, f"kelpctl: {bad}: not six fields: line 3 (5), line 5 (7)")

    def test_description_file_without_the_key(self):
        line = self.refused(2, "decode", "--desc", DESC, "--key", "1024", stdin=b"0")
        self.assertEqual(line, f"kelpctl: {DESC}: describes no key 1024")

    def test_any_element_of_the_codec_by_type(self):
        cases = [
            (("--type", "2", "--tag", "128"), "7", "80 01 07"),
            (("--type", "257", "--desc-arg", "4"), "[]", "30 83 00 00 00"),
            (("--type", "258"), '{"$name": "n", "$value": 7}', "30 83 00 00 06 04 01 6e 02 01 07"),
            (("--type", "48", "--desc-arg", "2010", "--desc", DESC),
             '{"site": "", "latitude": 0.0, "longitude": 0.0}', "30 83 00 00 06 04 00 09 00 09 00"),
        ]
        for options, text, octets in cases:
            with self.subTest(options=options):
                self.assertEqual(self.hex_of(text, *options), octets.split())
                back = self.run_ok("decode", "--hex", *options, stdin=octets)
                self.assertEqual(json.loads(back), json.loads(text))

    def test_as_string_sends_integers_of_named_values_as_text(self):
        self.assertEqual(self.hex_of('{"a": 42}', "--as-string"),
                         "30 83 00 00 0c 30 83 00 00 07 04 01 61 04 02 34 32".split())

    # Common records.

    def test_common_records(self):
        cases = [
            ("--request", '{"##UserID": 5, "##TableCount": 1, "##RowCount": 2, "a": [1, 2]}'),
            ("--request", '{"##UserID": 5, "##TableCount": 0, "##ResID": {"$resource": {"resDN": '
             '"NE=7", "label": "x", "maintype": 3, "subtype": 4, "iResNumber": 1, "wholeLabel": '
             '{"$bytes": "ff"}, "aResRelation": [{"iRelation": 1, "iDepend": 2, "aResDN": '
             '["a", "b"]}]}}}'),
            ("--response", '{"##retCode": 11, "##retCodeEx": 2, "##ver": "V1", "##TableCount": 1,'
             ' "##RowCount": 1, "x": 0.5, "y": "z"}'),
            ("--response", '{"##retCode": 0, "##TableCount": 2, "one": {"##RowCount": 1, "a": 1},'
             ' "two": {"##RowCount": 3, "b": ["x", {"$absent": true}, "y"], "c": [1, 2, 3]}}'),
        ]
        for form, text in cases:
            with self.subTest(text=text):
                octets = self.run_ok("encode", form, stdin=text)
                out = self.run_ok("decode", form, stdin=octets)
                self.assertEqual(json.loads(out), json.loads(text))
                self.assertEqual(self.run_ok("encode", form, stdin=out), octets)

    def test_what_a_common_record_would_lose(self):
        cases = [
            ('{"a": 1}', "$.a: would be lost"),
            ('{"##TableCount": 1, "##RowCount": 1, "a": [1]}',
             "$.a: would read back as an integer, not as a list"),
            ('{"##TableCount": 1, "##RowCount": 2, "a": [1, "x"]}',
             "$.a[1]: would read back as an integer, not as a text"),
            ('{"##TableCount": 1, "##RowCount": 1, "a": null}', "$.a: would be lost"),
            ('{"##TableCount": 1, "##RowCount": 1, "a": "x\\u0000y"}',
             "$.a: would read back with another value"),
            ('{"##TableCount": 1, "##RowCount": 2000000000, "a": [1]}',
             "$.##RowCount: counts more rows than a column has"),
            ('{"##TableCount": 1, "##RowCount": 2, "a": [{"$absent": true}, 1]}',
             "$.a: would be lost"),
            ("[1]", "$: is a list, where a common record wants a structure"),
        ]
        for text, expected in cases:
            with self.subTest(text=text):
                line = self.refused(2, "encode", "--hex", "--request", stdin=text)
                self.assertIn("standard input: " + expected, line)

    # JSON that no parameter set is.

    def test_json_without_a_place_in_a_parameter_set(self):
        cases = [
            ("", "malformed JSON"),
            ('{"a": 1, "a": 2}', "malformed JSON"),
            ("[" * 400, "malformed JSON"),
            ("2147483648", "$: 2147483648 does not fit an integer of 32 bits"),
            ('{"a": [1, -2147483649]}', "$.a[1]: -2147483649 does not fit"),
            ("true", "$: true and false have no place"),
            ("01", "$: 01 is no number"),
            ('{"$x": 1}', '$: unknown member "$x"; a name that begins with $ is written with $$'),
            ('{"$bytes": "f"}', '$: "$bytes" is no text of pairs'),
            ('{"$double": "1"}', '$: "$double" is "NaN"'),
            ('{"$absent": true}', "$: only elements and members can be absent"),
            ('{"a": {"$absent": 1}}', '$.a: "$absent" is true, and alone'),
            ('{"$value": 1, "x": 2}', '$: unknown member beside "$value"'),
            ('{"$value": {"$value": 1}}', '$: "$value" holds no value of its own'),
            ('{"$bytes:6": 1}', '$["$bytes:6"]: the name is not "$bytes:" and pairs'),
            ('{"ab": 1, "$bytes:6162": 2}', "$.ab: the name is there twice"),
            ('{"$resource": {"label": "x"}}', '$.$resource: has no member "resDN"'),
            ('{"$resource": {"resDN": 1}}', "is no text"),
            ('{"$resource": {"resDN": "", "z": 1}}', "has a member that no resource record has"),
            ('{"a":"\x1b"}', "malformed JSON"),
        ]
        for text, expected in cases:
            with self.subTest(text=text[:40]):
                line = self.refused(2, "encode", "--hex", stdin=text)
                self.assertIn(expected.replace("$.$resource", '$["$resource"]'), line)

    # Octets that are not what was asked for.

    def test_every_cut_of_a_file_is_named_by_its_offset(self):
        source = os.path.join(EXAMPLES, "element.json")
        form = ("--desc", DESC, "--key", "2000")
        octets = self.run_ok("encode", *form, source)
        for length in (0, 1, 4, 5, 6, 17, 30, 58, 70, len(octets) - 1):
            with self.subTest(length=length):
                line = self.refused(6, "decode", *form, stdin=octets[:length])
                self.assertIn("offset 0" if length else "no octets are there", line)

    def test_malformed_octets(self):
        form = ("--desc", DESC, "--key", "2010")
        cases = [
            (form, "02 01 07", "another element than the one described at offset 0"),
            (form, "30 02 04 05", "the length exceeds the input at offset 2 ($.site)"),
            (form, "30 03 04 01 61",
             "the input ends before a child that is not optional at offset 5 ($.latitude)"),
            (form, "30 83 00 00 06 04 00 09 00 09 00 05 00", "octets behind the element at "
             "offset 11"),
            (("--request",), "30 03 02 01", "Length Beyond Input at offset 2"),
            (("--request",), "30 03 02 01 07 00", "Octets Behind Element at offset 5"),
            (("--response",), "30 03 04 01 07", "Unexpected Tag at offset 2"),
            ((), "02 00", "the integer has not 1 to 8 octets at offset 2"),
            ((), "80 01 00", "offset 0"),
            ((), "02 01 0", "no pair of hexadecimal digits at byte 6"),
        ]
        for options, octets, expected in cases:
            with self.subTest(octets=octets):
                line = self.refused(6, "decode", "--hex", *options, stdin=octets)
                self.assertIn("standard input: ", line)
                self.assertIn(expected, line)

    def test_what_a_parameter_set_cuts_is_said(self):
        cases = [
            ((), "02 05 01 00 00 00 07", b"7\n", "integers cut to their low 32 bits: 1, the "
             "first at offset 0"),
            (("--desc", DESC, "--key", "2080"), "30 09 02 01 01 04 01 78 04 01 79",
             b'{\n  "first": 1,\n  "second": "x"\n}\n', "elements that nothing reads: 1, the first "
             "at offset 8"),
            (("--request",), "30 07 02 05 01 00 00 00 07",
             b'{\n  "##TableCount": 0,\n  "##UserID": 7\n}\n', "integers cut"),
        ]
        for options, octets, expected, note in cases:
            with self.subTest(octets=octets):
                status, out, err = self.kelpctl.run(
                    "paraset", "decode", "--hex", *options, stdin=octets.encode())
                self.assertEqual(status, 0)
                self.assertEqual(out, expected)
                self.assertIn("kelpctl: warning: standard input: " + note, self.one_line(err))

    # Files.

    def test_output_file_is_whole_and_keeps_its_mode(self):
        target = self.write("out.ber", "old")
        os.chmod(target, 0o640)
        self.assertEqual(self.run_ok("encode", "-o", target, stdin="7"), b"")
        self.assertEqual(self.read("out.ber"), b"\x02\x01\x07")
        self.assertEqual(stat.S_IMODE(os.stat(target).st_mode), 0o640)
        self.assertEqual(self.run_ok("decode", "-o", target, target), b"")
        self.assertEqual(self.read("out.ber"), b"7\n")

    def test_new_output_file_has_the_usual_mode(self):
        target = self.path("new.ber")
        self.run_ok("encode", "-o", target, stdin="7", limit=lambda: os.umask(0o027))
        self.assertEqual(stat.S_IMODE(os.stat(target).st_mode), 0o640)

    def test_output_through_a_link_leaves_the_link(self):
        target = self.write("linked.ber", "old")
        os.symlink("linked.ber", self.path("link.ber"))
        self.run_ok("encode", "-o", self.path("link.ber"), stdin="7")
        self.assertTrue(os.path.islink(self.path("link.ber")))
        self.assertEqual(self.read("linked.ber"), b"\x02\x01\x07")
        self.assertEqual(os.path.realpath(self.path("link.ber")), os.path.realpath(target))

    def test_failed_encoding_leaves_the_output_file(self):
        target = self.write("kept.ber", "old")
        before = sorted(os.listdir(self.folder))
        self.refused(2, "encode", "-o", target, stdin='{"a": [5000000000]}')
        self.refused(2, "encode", "-o", target, stdin='{"a": null}')
        self.refused(6, "decode", "-o", target, stdin=b"\x02\x02\x07")
        self.assertEqual(self.read("kept.ber"), b"old")
        self.assertEqual(sorted(os.listdir(self.folder)), before, "something is left beside it")

    def test_output_that_cannot_be_written(self):
        line = self.refused(7, "encode", "-o", "/nonexistent/x", stdin="7")
        self.assertEqual(line, "kelpctl: /nonexistent/x: No such file or directory")
        line = self.refused(7, "encode", "-o", "/dev/full", stdin="7")
        self.assertEqual(line, "kelpctl: /dev/full: No space left on device")

    def test_device_is_written_through(self):
        self.assertEqual(self.run_ok("encode", "-o", "/dev/stdout", stdin="7"), b"\x02\x01\x07")

    def test_input_that_cannot_be_read(self):
        for command in ("encode", "decode", "show"):
            line = self.refused(2, command, "--hex", "/nonexistent")
            self.assertEqual(line, "kelpctl: /nonexistent: No such file or directory")

    def test_octets_do_not_go_to_a_terminal(self):
        source = self.write("seven.json", "7")
        for arguments, expected in (((), (2, b"")), (("-o", "-"), (0, b"\x02\x01\x07")),
                                    (("--hex",), (0, b"02 01 07\r\n"))):
            with self.subTest(arguments=arguments):
                reader, terminal = pty.openpty()
                done = self.kelpctl.start_on(terminal, "paraset", "encode", source, *arguments)
                os.close(terminal)
                status = done.wait(60)
                shown = b"" if status else os.read(reader, 100)
                os.close(reader)
                self.assertEqual((status, shown), expected)

    # Looking at octets.

    def test_show_names_elements_and_prints_the_tree(self):
        out = self.run_ok("show", "--hex", "--desc", DESC, "--key", "2050",
                          stdin="30 09 81 01 07 82 04 62 75 73 79").decode()
        self.assertEqual(out, """\
  offset depth  header+contents  element
       0   0        2+9  30 SEQUENCE
       2   1        2+1    error: 81 [1] 7
       5   1        2+4    text: 82 [2] "busy"

root.error:7(integer).
root.text:busy(string).
""")

    def test_show_without_a_description(self):
        out = self.run_ok("show", "--hex", stdin="30 07 a1 80 41 01 ff 00 00").decode()
        self.assertEqual(out, """\
  offset depth  header+contents  element
       0   0        2+7  30 SEQUENCE
       2   1        2+?    [0]: a1 [1]
       4   2        2+1      41 [APPLICATION 1] ff  (not read)
       7   2        2+0      00 end of contents

no tree: the length is indefinite at offset 2 ($[0])
""")

    def test_show_of_a_common_response(self):
        out = self.run_ok("show", "--hex", "--response",
                          stdin="30 80 02 01 0b a1 04 04 02 56 31 00 00").decode()
        self.assertEqual(out, """\
  offset depth  header+contents  element
       0   0        2+?  30 SEQUENCE
       2   1        2+1    02 INTEGER 11
       5   1        2+4    a1 [1]
       7   2        2+2      04 OCTET STRING "V1"
      11   1        2+0    00 end of contents

root.##TableCount:0(integer).
root.##retCode:11(integer).
root.##ver:V1(string).
""")

    def test_show_goes_as_far_as_the_octets(self):
        cases = [
            ((), "30 06 02 01 07 04 05 61", 2, "the length exceeds the input at offset 5"),
            ((), "30 05 02 01 07 1f ff", 2, "the input ends inside an element's header at offset"),
            ((), "04 80", 0, "the length of a primitive element is indefinite at offset 0"),
            ((), "02 01 07 02", 1, "octets behind the element at offset 3"),
            ((), "a0 80 " * 200, 128, "more than 128 elements are inside one another"),
            (("--desc", DESC, "--key", "2010"), "30 03 04 01 61", 2, "at offset 5 ($.latitude)"),
        ]
        for options, octets, shown, expected in cases:
            with self.subTest(octets=octets[:40]):
                status, out, err = self.kelpctl.run(
                    "paraset", "show", "--hex", *options, stdin=octets.encode())
                self.assertEqual(status, 6)
                self.assertEqual(out.count(b"\n"), 1 + shown)
                self.assertIn(expected, self.one_line(err))

    def test_show_marks_what_is_not_read(self):
        _, out, err = self.kelpctl.run("paraset", "show", "--hex", "--desc", DESC, "--key", "2080",
                                       stdin=b"30 06 02 01 01 02 01 05")
        self.assertIn(b"02 INTEGER 5  (not read)\n", out)
        self.assertIn("elements that nothing reads: 1", self.one_line(err))

    def test_show_does_nothing_to_the_terminal(self):
        out = self.run_ok("show", "--hex", stdin="04 04 1b 5b 32 4a")
        self.assertNotIn(b"\x1b", out)
        self.assertIn(b'04 OCTET STRING "\\x1b[2J"\n\nroot:\\x1b[2J(string).\n', out)

    # The command line.

    def test_mistakes_on_the_command_line(self):
        cases = [
            ((), "subcommand"),
            (("encode", "--key", "7"), "--key"),
            (("encode", "--key", "2000", "--type", "2"), "--type"),
            (("encode", "--request", "--response"), "--request excludes --response"),
            (("encode", "--tag", "5"), "--tag requires --type"),
            (("encode", "--desc", "x"), "--desc needs --key or --type"),
            (("encode", "--request", "--as-string"), "common records have no description"),
            (("decode", "--as-string"), "--as-string"),
            (("show", "-o", "x"), "-o"),
        ]
        for arguments, expected in cases:
            with self.subTest(arguments=arguments):
                self.assertIn(expected, self.refused(2, *arguments))

    def test_help_documents_the_exit_statuses(self):
        for arguments in (("--help",), ("encode", "--help"), ("show", "--help")):
            self.assertIn(b"Exit status:", self.run_ok(*arguments))


if __name__ == "__main__":
    unittest.main()
