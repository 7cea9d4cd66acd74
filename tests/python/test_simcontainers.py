"""The simcontainers package against the installed library."""

import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path
from unittest import mock

import simcontainers
from simcontainers import SimError

BAD_STRING = "String passed into SIM is BAD. set/setenv _ZOR_FAIL_ON_BAD and rerun."


class GlobTest(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = folder.name
        for name in ("a.txt", "B.TXT", "größe.txt", "日本.dat", "c.dat"):
            Path(self.root, name).write_bytes(b"")

    def test_lists_the_matching_paths_as_str(self) -> None:
        cases = {
            "*.txt": {"a.txt", "B.TXT", "größe.txt"},
            "grö*": {"größe.txt"},
            "*.none": set(),
        }
        for pattern, names in cases.items():
            with self.subTest(pattern=pattern):
                expected = {f"{self.root}/{name}" for name in names}
                self.assertEqual(set(simcontainers.glob(f"{self.root}/{pattern}")), expected)
        with simcontainers.glob(f"{self.root}/c.*") as paths:
            self.assertEqual(list(paths), [f"{self.root}/c.dat"])
            self.assertEqual(list(paths), [])  # spent, and closed

    def test_failures_raise_the_library_text_cut_to_the_buffer(self) -> None:
        with mock.patch.object(simcontainers, "ERROR_CAPACITY", 8):
            with self.assertRaises(SimError) as caught:
                simcontainers.glob(f"{self.root}/missing/*.x")
        self.assertEqual(str(caught.exception), "System ")
        with self.assertRaises(SimError) as caught:
            simcontainers.glob(self.root + "/\udcff*")  # not UTF-8
        self.assertEqual(str(caught.exception), BAD_STRING)
        with self.assertRaises(ValueError):
            simcontainers.glob("a\0*")

    @unittest.skipUnless(os.path.isdir("/proc/self/fd"), "counts descriptors and memory in /proc")
    def test_handles_dropped_early_leak_nothing(self) -> None:
        pattern = f"{self.root}/*"

        def churn(times: int) -> None:
            for _ in range(times):
                next(simcontainers.glob(pattern))  # dropped at once
                with simcontainers.glob(pattern) as paths:
                    next(paths)
                for _ in simcontainers.glob(pattern):
                    break

        def resident_bytes() -> int:
            return int(Path("/proc/self/statm").read_text().split()[1]) * os.sysconf("SC_PAGE_SIZE")

        churn(500)
        descriptors, resident = len(os.listdir("/proc/self/fd")), resident_bytes()
        churn(5000)
        self.assertEqual(len(os.listdir("/proc/self/fd")), descriptors)
        self.assertLess(resident_bytes() - resident, 1 << 19)


class StringAndMonitorTest(unittest.TestCase):
    def test_check_string_round_trip(self) -> None:
        for text in ("x", "", "Grüße ✓", "bad string.", "Bad string. "):
            with self.subTest(text=text):
                self.assertEqual(simcontainers.check_string(text), text)
        for text in ("Bad string.", "\udcff"):
            with self.subTest(text=text), self.assertRaises(SimError) as caught:
                simcontainers.check_string(text)
            self.assertEqual(str(caught.exception), BAD_STRING)

    def test_start_stop_timers_and_marks_reach_the_monitor(self) -> None:
        script = """if True:
            import simcontainers
            with simcontainers.started() as count:
                assert count >= 2, count  # loading counted once already
                for _ in range(2):
                    with simcontainers.timer(7, "python ✓"):
                        simcontainers.mark("inside")
        """
        environment = dict(os.environ, SIM_RESOURCE_MONITOR="1")
        run = subprocess.run([sys.executable, "-c", script], env=environment, capture_output=True)
        report = run.stderr.decode("utf-8")
        self.assertEqual(run.returncode, 0, report)
        self.assertRegex(report, r"(?m)^ +7  python ✓ +2 ")
        self.assertRegex(report, r"(?m)^ +\d+\.\d+ s  inside$")


if __name__ == "__main__":
    unittest.main()
