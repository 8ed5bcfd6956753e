"""Holds the tables of gzdtool against the converter's text: times, positions, velocities, durations,
counts, of small and of made recordings, repaired and as they are.

    converter_equality.py GZDTOOL GZDCONV GZDSYNTH GOLDEN_RECORDINGS
    converter_equality.py GZDTOOL GZDCONV --files RECORDING...
"""
import pathlib
import subprocess
import sys
import tempfile

TOOL, CONVERTER = sys.argv[1:3]
GOLDEN = """blink_repairs block_repairs block_shapes buttons_and_input event_kinds geometry
            half_milliseconds mapping messages pose_events pose_flags position_types status_flags
            target_flags""".split()
MADE = ["--generation 1 --eyes left --coords gaze,href", "--rate 2000 --gap 9 --eyes right",
        "--coords gaze,href,raw --gap 30 --zip", "--generation 4 --pose --ellipse 72",
        "--unpaired-blinks --stray-samples --repeat-times", "--start-time 1500000000 --target --gap 9",
        "--generation 2 --no-resolution --rate 500"]
OTHERS = "made3 made5 pose_flags status_flags".split()  # with words, targets, poses of both eyes
EVENTS = {"EFIX": "fixation", "ESACC": "saccade", "EBLINK": "blink"}
POSITIONS = {"-sg": ("gaze", ""), "-sh": ("href", "href_"), "-sp": ("raw", "raw_")}
faults, compared = [], 0


def table(name, path, *options):
    out = subprocess.run([TOOL, name, *options, path], capture_output=True, check=True).stdout
    head, *lines = out.decode().rstrip("\n").split("\n")
    return [dict(zip(head.split("\t"), line.split("\t"))) for line in lines]


def text(path, *options):
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run([CONVERTER, *"-q -y -t -ntime_check -fp 4 -miss NaN -p".split(), folder,
                        *options, path], capture_output=True)
        lines = next(pathlib.Path(folder).glob("*.asc")).read_bytes().decode(errors="replace")
    return [line.split("\t") for line in lines.split("\n") if line and not line.startswith("*")]


def number(cell):
    return None if cell.strip() in ("NaN", "n/a") else float(cell)


def same(asc, cell, decimals=5, zero_is_null=False):
    """Whether a column of the text says what a cell says."""
    one, other = number(asc), number(cell)
    if one is None or other is None:
        return one is other or (zero_is_null and other is None and one <= 0)
    slack = abs(one) * 0.06 if abs(one) >= 1e5 else 0.51 * 10 ** -decimals + 1e-6 * abs(one)
    return abs(one - other) <= slack


def expect(holds, *what):
    global compared
    compared += 1
    if not holds:
        faults.append(what)


def compare_samples(path, options, position, blocks):
    rows = [row for row in table("samples", path, "--columns", "href,raw,velocity,resolution", *options[0])
            if row["block"] != "n/a"]
    lines = [line for line in text(path, *"-ftime -s -nflags -ntarget -vel -res".split(), position,
                                   *options[1]) if line[0][:1].isdigit()]
    expect(len(lines) == len(rows), path, position, "samples", len(lines), len(rows))
    kind, prefix = POSITIONS[position]
    for line, row in zip(lines, rows):
        block = blocks[int(row["block"]) - 1]
        expect(float(line[0]) == float(row["time"]), path, line, row)
        eyes = {"both": ["left", "right"]}.get(block["eyes"], [block["eyes"]])
        if kind not in block["positions"] or len(line) < 1 + 5 * len(eyes):
            continue  # an eye that a sample lacks has no columns
        cells = line[1:]
        for eye in eyes:
            for name in ("x", "y"):
                expect(same(cells.pop(0), row[f"{eye}_{prefix}{name}"]), path, position, line, row)
            expect(same(cells.pop(0), row[f"{eye}_pupil"], zero_is_null=True), path, line, row)
        if kind == "gaze":
            for name in [f"{eye}_velocity_{axis}" for eye in eyes for axis in "xy"]:
                expect(same(cells.pop(0), row[name]), path, name, line, row)
            for name in ("resolution_x", "resolution_y"):
                expect(same(cells.pop(0), row[name]), path, name, line, row)


def text_of_bits(word, bits):
    return "".join(letter if word & bit else "." for bit, letter in bits)


# The columns of -input -buttons -hr -pe -sfhmf behind gaze, in the order of the text; "|" is a text.
WORDS = "input buttons status|".split()
BY_EYE = [f"{eye}_{{}}_{axis}" for axis in "xy" for eye in ("left", "right", "")]
POSE = (["head_rotation_" + axis for axis in "xyz"] + ["head_" + axis for axis in "xyz"] + ["letters|", "bits|"]
        + [name.format(kind).lstrip("_") for kind in ("head_in_space", "eye_in_head") for name in BY_EYE]
        + [f"{kind}_resolution_{axis}" for kind in ("head_in_space", "eye_in_head") for axis in "xy"]
        + [f"{eye}_ellipse_{what}" for eye in ("left", "right") for what in "x y major minor angle".split()])
TARGET = ["target_x", "target_y", "target_distance"]
STATUS_BITS = [(0x1000, "I"), (0x100, "C"), (0x400, "R"), (0x200, "C"), (0x800, "R")]
TARGET_BITS = list(zip((0x4000, 0x2000, 0x1000, 0x800, 0x400, 0x80, 0x40, 0x20, 0x10, 8, 4, 2, 1),
                       "MANCFTBLRTBLR"))


def compare_others(path, options, blocks):
    """Words, head targets, poses and ellipses of binocular recordings."""
    rows = [row for row in table("samples", path, "--columns", "input,buttons,status,target,head,ellipse",
                                 *options[0]) if row["block"] != "n/a"]
    lines = [line for line in text(path, *"-ftime -s -input -buttons -hr -pe -sfhmf".split(), *options[1])
             if line[0][:1].isdigit()]
    expect(len(lines) == len(rows) > 0, path, len(lines), len(rows))
    for line, row in zip(lines, rows):
        if blocks[int(row["block"]) - 1]["eyes"] != "both":
            continue
        names = [name for name in WORDS if name != "status|" or row["status"] != "n/a" or "..." in line[9]]
        names += POSE if len(line) > 30 else TARGET if len(line) > 10 else []
        expect(len(line) == 7 + len(names), path, line, names)
        for name, cell in zip(names, line[7:]):
            if not name.endswith("|"):
                cell = cell.split()[0] if name == "target_distance" else cell
                is_same = same(cell, row[name], zero_is_null=name == "buttons")
                expect(is_same or row["recorded"] == "false", path, name, cell, row)
            elif name == "status|" and row["status"] != "n/a" and len(line) < 30:
                expect(cell[:5] == text_of_bits(int(row["status"]), STATUS_BITS), path, cell, row["status"])
            elif name == "status|" and row["status"] != "n/a":
                expect(int(cell.split("error: ")[1], 16) == int(row["status"]), path, cell, row["status"])
            elif name == "bits|" and row["head_marker_flags"] != "n/a":
                expect(cell == f"{int(row['head_marker_flags']):032b}", path, cell, row["head_marker_flags"])
        if names[-1] == "target_distance" and row["target_flags"] != "n/a":
            shown = line[-1].split()[1][:13]
            expect(shown == text_of_bits(int(row["target_flags"]), TARGET_BITS), path, shown, row["target_flags"])


def compare_event(line, row, positions_in):
    duration = (int(line[4]) + 2 ** 31) % 2 ** 32 - 2 ** 31
    expect([EVENTS[line[0]], *line[2:4], str(duration)] ==
           [row[name] for name in ("type", "onset", "offset", "duration")], line, row)
    expect({"L": "left", "R": "right"}[line[1]] == row["eye"], line, row)
    is_href = positions_in == "href"
    if row["type"] == "fixation":
        columns, first = ["x", "y", "pupil"], 8 if is_href else 5
    elif row["type"] == "saccade":
        columns = ["start_x", "start_y", "end_x", "end_y", "amplitude", "peak_velocity"]
        first = 11 if is_href else 5
    else:
        return
    gaze_is_null = row[columns[0]] == "n/a"  # the record holds none: the text shows other values
    for name, cell in zip(columns, line[first:]):
        if positions_in == "raw" and name == "amplitude":
            cell = str(float(cell) / 1000)  # the text leaves the division out
        lenient = name in ("pupil", "peak_velocity", "amplitude")
        expect((gaze_is_null and row[name] == "n/a") or
               same(cell, row[name], 4 if lenient and name != "amplitude" else 5, lenient), name, line, row)


def compare_events(path, options, blocks):
    lines = text(path, "-geom", *options[1])
    in_block = {block["block"]: block["events_in"] for block in blocks}
    events = table("events", path, *options[0])
    of_events = [line for line in lines if line[0] in EVENTS]
    expect(len(of_events) == len(events), path, "events", len(of_events), len(events))
    for line, row in zip(of_events, events):
        compare_event(line, row, in_block.get(row["block"]))
    messages = [[row["time"], row["text"]] for row in table("messages", path, *options[0])
                if row["text"] != "n/a" and "\\n" not in row["text"]]
    shown = [[line[1], "\\t".join(line[2:])] for line in lines if line[0] == "MSG"]
    expect(len(messages) <= len(shown), path, messages, shown)
    expect(all(message in shown for message in messages), path, messages, shown)
    inputs = [[row["time"], row["button"], row["value"]] for row in table("inputs", path, *options[0])]
    shown = [line[1:] if line[0] == "BUTTON" else [line[1], "n/a", line[2]]
             for line in lines if line[0] in ("BUTTON", "INPUT")]
    expect(inputs == shown, path, inputs, shown)
    starts = [line[1].strip() for line in lines if line[0] == "START"]
    expect(starts == [block["start"] for block in blocks], path, starts, blocks)


def compare(path):
    for options in (([], []), (["--no-repair"], ["-z"])):
        blocks = table("blocks", path, *options[0])
        for position in POSITIONS:
            compare_samples(path, options, position, blocks)
        compare_events(path, options, blocks)
        if any(kind in path for kind in OTHERS):
            compare_others(path, options, blocks)


def make_recordings(folder, synth, golden):
    for name in GOLDEN:
        yield subprocess.run([golden, name, f"{folder}/{name}.gzd"], check=True).args[-1]
    for number, options in enumerate(MADE):
        yield subprocess.run([synth, "--duration", "2", "--trials", "2", *options.split(),
                              f"{folder}/made{number}.gzd"], check=True).args[-1]


with tempfile.TemporaryDirectory() as folder:
    given = sys.argv[4:] if sys.argv[3] == "--files" else make_recordings(folder, *sys.argv[3:5])
    for path in given:
        compare(path)
for fault in faults[:20]:
    print(*fault)
print(f"{compared} comparisons, {len(faults)} differences")
sys.exit(bool(faults) or compared < 1000)
