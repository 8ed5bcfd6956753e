"""What a run over sound recordings does not show: refused configurations, crashes, odd names."""

import os
import sys
import tempfile
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "lib"))
import convert
import plan
import recordings
import report
import state

# Converts, but for recordings whose names ask for something else.
CONVERTER = """#!/bin/bash
stage=$3
shift 3
[[ $1 != -* ]] || shift
(($#)) || exit 0
kind=$1
[[ -e $1 ]] || kind=damaged
echo "processing file $1 "
case $kind in
  *crash*) echo "half a te" >"$stage/$2.asc"; kill -KILL $$ ;;
  *full*) echo "Failed write to output file $2 "; status=1 ;;
  *disk*) echo "Could not process $1 "; echo "gzdconv: $1: Input/output error"; status=1 ;;
  *damaged*) echo "End of file Exception"; echo "Could not process $1 "; status=1 ;;
  *busy*) echo more >>"$1"; echo text >"$stage/$2.asc" ;;
  *gaps*) printf 'Missing %d samples. Inserting dummy samples \\n' 9 16 3 ;;&
  *cut*) echo "gzdconv: $1: reading stopped"; echo "gzdconv: other: a line" ;;&
  *breaks*) echo "gzdconv: $1: messages with line breaks, copied as they are: 2" ;;&
  *) printf 'Processed [*]10%%\\rProcessed [**]20%%\\rhm\\n'; echo "text of $1" >"$stage/$2.asc" ;;
esac
exit ${status:-0}
"""


class InScratchFolder(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(scratch.name)
        with open("gzdconv", "w") as file:
            file.write(CONVERTER)
        os.chmod("gzdconv", 0o755)

    def add(self, *names):
        for name in names:
            os.makedirs(os.path.dirname(name) or ".", exist_ok=True)
            with open(name, "w") as file:
                file.write(name)

    def settings(self, **config):
        return recordings.read_settings({"output": "out", "gzdconv": "./gzdconv", **config})

    def found(self, **config):
        return {one.path: one.text for one in recordings.find_recordings(self.settings(**config))}


class Configuration(InScratchFolder):
    def refused(self, told, **config):
        with self.assertRaisesRegex(recordings.ConfigError, told):
            recordings.find_recordings(self.settings(**config))

    def test_refusals_name_the_key(self):
        self.add("a/x.gzd", "b/x.gzd", "a/notes.txt")
        self.refused("unknown key 'chunks'", folder="a", chunks=3)
        self.refused("list, folder and pattern", folder="a", pattern="b/*")
        self.refused("output", folder="a", output="")
        self.refused("no recordings in pattern", pattern="c/*.gzd")
        self.refused("list none.txt", list="none.txt")
        self.refused("chunk: a number", folder="a", chunk=0)
        self.refused("retry: yes or no", folder="a", retry="perhaps")
        self.refused("-p is the workflow's own", folder="a", options="-s -p elsewhere")
        self.refused("write one file", folder="a", options="-d log.txt")
        self.refused("b/x.gzd is not below base a", pattern="*/*.gzd", base="a")

    def test_recordings_of_one_name_need_a_base(self):
        self.add("a/x.gzd", "b/x.GZD")
        self.refused("a/x.gzd and b/x.GZD would both become x.asc", pattern="*/*")
        texts = {"a/x.gzd": "a/x.asc", "b/x.GZD": "b/x.asc"}
        self.assertEqual(self.found(pattern="*/*", base="."), texts)
        self.assertEqual(self.found(folder="."), texts)

    def test_list(self):
        with open("list.txt", "wb") as file:
            file.write(b"\xef\xbb\xbf# today's\r\na/one two.gzd\r\n\n")
            file.write(b"-y.gzd\na//one two.gzd\n\xff.gzd\n")
        odd = os.fsdecode(b"\xff")
        self.assertEqual(
            self.found(list="list.txt"),
            {"a/one two.gzd": "one two.asc", "./-y.gzd": "-y.asc", f"{odd}.gzd": f"{odd}.asc"},
        )
        with open("list.txt", "a") as file:
            file.write("notes.txt\n")
        self.refused("notes.txt is no recording", list="list.txt")

    def test_options_are_tried(self):
        for options in ("word", "-miss"):
            with open("gzdconv", "w") as file:
                file.write('#!/bin/sh\nshift 3; [ $# = 0 ] || { echo "told: $*"; exit 1; }\n')
            self.add("a/x.gzd")
            with self.assertRaisesRegex(recordings.ConfigError, f"told: {options}"):
                plan.make_plan(self.settings(folder="a", options=options))


class Work(InScratchFolder):
    def run_plan(self, **config):
        """The statuses after a run, by recording, and what was converted in it."""
        settings = self.settings(**(config if "list" in config else {"folder": "in", **config}))
        number = plan.make_plan(settings)
        path = state.plan_path("out", number)
        worked = []
        for chunk, members in state.load(path)["chunks"].items():
            result = state.result_path("out", number, chunk)
            if not os.path.exists(result):
                convert.main(path, chunk, result)
                worked += [recording for recording, _ in members]
        report.write_report(state.load(path))
        rows = report.report_rows(state.load(path))
        return {row[2]: (row[0], row[5]) for row in rows}, sorted(worked)

    def test_a_crash_takes_no_other_recording_along(self):
        self.add("in/a.gzd", "in/crash.gzd", "in/z.gzd")
        told, _ = self.run_plan()
        self.assertEqual(told["in/a.gzd"], ("converted", "hm"))
        self.assertEqual(told["in/z.gzd"], ("converted", "hm"))
        self.assertEqual(told["in/crash.gzd"], ("stopped", "gzdconv was ended by signal 9"))
        texts = [name for name in sorted(os.listdir("out")) if name.endswith(".asc")]
        self.assertEqual(texts, ["a.asc", "z.asc"])

    def test_the_report_tells_what_was_lost(self):
        self.add("in/breaks.gzd", "in/cut gaps.gzd", "in/damaged.gzd", "in/gaps.gzd")
        self.run_plan()
        with open("out/report.tsv") as file:
            rows = [line.rstrip("\n").split("\t") for line in file]
        gaps = "Missing 9 samples. Inserting dummy samples (and 2 more); hm"
        self.assertEqual(
            [(row[1], row[5]) for row in rows[1:]],
            [
                ("whole", "messages with line breaks, copied as they are: 2; hm"),
                ("lossy", "reading stopped; " + gaps.replace("; hm", "; gzdconv: other: a line; hm")),
                ("failed", "End of file Exception; Could not process in/damaged.gzd"),
                ("lossy", gaps),
            ],
        )
        with open("out/summary.txt") as file:
            summary = file.read()
        self.assertIn("4 recordings: 3 converted (2 lossy), 1 failed\n", summary)
        self.assertIn("lossy: in/gaps.gzd: Missing 9", summary)

    def test_only_what_may_end_otherwise_is_tried_again(self):
        self.add("in/a.gzd", "in/damaged.gzd", "in/disk.gzd", "in/full.gzd")
        told, _ = self.run_plan()
        self.assertEqual(told["in/full.gzd"], ("stopped", "Failed write to output file 3"))
        self.assertEqual(told["in/disk.gzd"][0], "stopped")
        self.assertEqual(
            told["in/damaged.gzd"],
            ("failed", "End of file Exception; Could not process in/damaged.gzd"),
        )
        tried_again = ["in/disk.gzd", "in/full.gzd"]
        self.assertEqual(self.run_plan()[1], tried_again)
        self.assertEqual(self.run_plan(retry="yes")[1], ["in/damaged.gzd", *tried_again])
        os.utime("in/damaged.gzd", (1, 1))  # an older copy is another recording too
        self.assertEqual(self.run_plan()[1], ["in/damaged.gzd", *tried_again])

    def test_a_recording_that_grows_is_converted_again(self):
        self.add("in/busy.gzd")
        told, _ = self.run_plan()
        self.assertEqual(told["in/busy.gzd"][0], "pending")
        self.assertFalse(os.path.exists("out/busy.asc"))
        self.assertEqual(self.run_plan()[1], ["in/busy.gzd"])

    def test_an_old_text_does_not_stay_beside_a_damaged_recording(self):
        self.add("in/damaged.gzd", "out/damaged.asc")
        self.run_plan()
        self.assertFalse(os.path.exists("out/damaged.asc"))

    def test_the_text_of_a_recording_taken_away_stays(self):
        self.add("in/a.gzd")
        with open("list.txt", "w") as file:
            file.write("in/a.gzd\n")
        self.run_plan(list="list.txt")
        os.remove("in/a.gzd")
        self.assertEqual(self.run_plan(list="list.txt")[0]["in/a.gzd"][0], "failed")
        self.assertTrue(os.path.exists("out/a.asc"))

    def test_other_options_convert_everything_again(self):
        self.add("in/a.gzd", "in/b.gzd")
        self.run_plan()
        self.assertEqual(self.run_plan()[1], [])
        self.assertEqual(self.run_plan(options="-res")[1], ["in/a.gzd", "in/b.gzd"])

    def test_recordings_taken_from_the_list_leave_the_report(self):
        self.add("in/a.gzd", "in/b.gzd")
        self.run_plan()
        os.remove("in/b.gzd")
        self.assertEqual(self.run_plan(), ({"in/a.gzd": ("converted", "hm")}, []))


if __name__ == "__main__":
    unittest.main()
