#!/usr/bin/env python3
"""Tries the comparison of measured ratios and the page that is made of them: test_performance.py TOOL"""
import pathlib
import subprocess
import sys
import tempfile
import unittest

TOOL = sys.argv.pop()


class Ratios(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def run_tool(self, job, measured, kept=None, page=None):
        (self.folder / "measured").write_text(measured, encoding="utf-8")
        if kept is not None:
            (self.folder / "kept").write_text(kept, encoding="utf-8")
        arguments = [TOOL, job, self.folder / "measured", self.folder / "kept"]
        if page is not None:
            (self.folder / "page").write_text(page, encoding="utf-8")
            arguments.append(self.folder / "page")
        return subprocess.run([sys.executable, *arguments], capture_output=True, text=True, check=False)

    def test_a_ratio_as_kept_passes(self):
        done = self.run_tool("check", "bench_a\tdecode\t0.45\t0.5\t0\n", "bench_a\tdecode\t0.44\t0.5\t0\n")
        self.assertEqual(done.returncode, 0, done.stdout)
        self.assertIn("1 ratios, 0 not as they should be, 0 past their target", done.stdout)

    def test_past_the_target_fails(self):
        done = self.run_tool("check", "bench_a\tdecode\t0.51\t0.5\t0\n", "bench_a\tdecode\t0.51\t0.5\t0\n")
        self.assertEqual(done.returncode, 1)
        self.assertIn("PAST THE TARGET", done.stdout)

    def test_a_missed_target_with_a_bound_passes_and_is_told(self):
        done = self.run_tool("check", "bench_a\tdecode\t0.51\t0.5\t0.6\n")
        self.assertEqual(done.returncode, 0, done.stdout)
        self.assertRegex(done.stdout, r"decode .* target +0\.5 +bound +0\.6 +target missed")
        self.assertIn("1 ratios, 0 not as they should be, 1 past their target", done.stdout)

    def test_past_the_bound_fails(self):
        done = self.run_tool("check", "bench_a\tdecode\t0.61\t0.5\t0.6\n", "bench_a\tdecode\t0.61\t0.5\t0.6\n")
        self.assertEqual(done.returncode, 1)
        self.assertIn("PAST THE BOUND", done.stdout)

    def test_worse_within_the_bound_fails(self):
        done = self.run_tool("check", "bench_a\tdecode\t0.59\t0.5\t0.6\n", "bench_a\tdecode\t0.51\t0.5\t0.6\n")
        self.assertEqual(done.returncode, 1)
        self.assertIn("WORSE", done.stdout)

    def test_the_page_tells_missed_targets(self):
        marks = "".join(f"<!-- {name} -->\nold\n<!-- end -->\n" for name in ("machine", "growth", "bench_a"))
        done = self.run_tool("page", "bench_a\tread\t0.55\t0.5\t0.6\n", page=marks)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("| read | 0.55 | 0.5 (missed) | 0.6 |", (self.folder / "page").read_text(encoding="utf-8"))

    def test_worse_by_a_sixth_fails_where_there_is_no_limit(self):
        kept = "bench_a\tread\t1.0\t0\t0\n"
        self.assertEqual(self.run_tool("check", "bench_a\tread\t1.14\t0\t0\n", kept).returncode, 0)
        done = self.run_tool("check", "bench_a\tread\t1.16\t0\t0\n", kept)
        self.assertEqual(done.returncode, 1)
        self.assertIn("WORSE", done.stdout)

    def test_what_was_not_measured_is_named(self):
        done = self.run_tool("check", "bench_a\tread\t1\t0\t0\n", "bench_a\tread\t1\t0\t0\nbench_b\twrite\t1\t0\t0\n")
        self.assertEqual(done.returncode, 0)
        self.assertRegex(done.stdout, "bench_b +write +not measured")

    def test_without_kept_ratios_the_limits_count(self):
        self.assertEqual(self.run_tool("check", "bench_a\tread\t9\t0\t0\n").returncode, 0)
        self.assertEqual(self.run_tool("check", "bench_a\tread\t9\t2\t0\n").returncode, 1)

    def test_the_page_is_filled_and_the_ratios_are_kept(self):
        marks = "".join(f"<!-- {name} -->\nold\n<!-- end -->\ntext\n" for name in ("machine", "growth", "bench_a"))
        done = self.run_tool("page", "bench_a\tread\t0.25\t0.5\t0\nbench_a\tgrowth, read\t1.02\t1.1\t0\n", page=marks)
        self.assertEqual(done.returncode, 0, done.stderr)
        page = (self.folder / "page").read_text(encoding="utf-8")
        self.assertNotIn("old", page)
        self.assertIn("| read | 0.25 | 0.5 | - |", page)
        self.assertIn("| read | 1.02 | 1.1 | - |", page)
        self.assertEqual(page.count("text\n"), 3)
        self.assertEqual((self.folder / "kept").read_text(encoding="utf-8").splitlines()[0],
                         "bench_a\tread\t0.25\t0.5\t0")

    def test_figures_without_a_place_on_the_page_fail(self):
        done = self.run_tool("page", "bench_a\tread\t0.25\t0.5\t0\n", page="nothing\n")
        self.assertEqual(done.returncode, 1)
        self.assertIn("no place for the figures", done.stderr)


unittest.main()
