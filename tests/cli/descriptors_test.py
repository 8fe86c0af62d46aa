"""kelpctl without the file descriptors that the message bus needs."""

import os
import resource
import unittest

from support.programs import Kelpctl, ProgramTest


class DescriptorsTest(ProgramTest):
    def test_bus_that_cannot_be_used(self):
        few = (4, 4)  # enough to start the program
        status, out, err = Kelpctl(os.environ["KELPCTL"], self.run_dir).run(
            "call", "77", "1", limit=lambda: resource.setrlimit(resource.RLIMIT_NOFILE, few))
        self.assertEqual((status, out), (3, b""))
        line = self.one_line(err)
        self.assertIn("kelpctl: the message bus cannot be used: ", line)
        self.assertIn("Too many open files", line)


if __name__ == "__main__":
    unittest.main()
