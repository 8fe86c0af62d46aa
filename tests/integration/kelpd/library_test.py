"""The library on an installation as `kelpd init` makes it, nothing changed by hand."""

import os
import subprocess
import unittest

from support.kelpd import KelpdTest, environment
from support.programs import DEADLINE_S


class LibraryTest(KelpdTest):
    def groups(self, process, handle):
        done = subprocess.run([os.environ["GROUPS_CLIENT"], str(process), str(handle)],
                              env=environment(OSS_ROOT=self.root.oss), capture_output=True,
                              timeout=DEADLINE_S, check=False, text=True)
        return done.returncode, done.stdout

    def test_process_groups_over_https(self):
        self.root.write_groups('{"groupmap": {"7": {"0": "a", "2": "b"}, "8": {"1": "c"}}}')
        server = self.serve()
        for process, handle, expected in ((7, 0, "7.0 a\n7.2 b\n"), (7, 2, "7.2 b\n"),
                                          (8, 0, "8.1 c\n"), (8, 2, ""), (9, 1, "")):
            self.assertEqual(self.groups(process, handle), (0, expected))
        self.stop(server)
        self.assertEqual(self.groups(7, 0), (1, ""))
        self.assertIn('client="kelp client" method=GET path=/rest/mrb/v1/getrestgroupinfo',
                      self.root.log())


if __name__ == "__main__":
    unittest.main()
