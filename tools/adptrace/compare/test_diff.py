"""adptrace diff as people run it: its exit status, its options, and recordings that are none."""
import os
import pathlib
import random
import shlex
import subprocess

import pytest

ADPTRACE = shlex.split(os.environ["ADPTRACE"])
SAMPLES = sorted((pathlib.Path(__file__).parents[1] / "recording" / "samples").glob("*.adptrace"))
SAMPLE = SAMPLES[0]
DIFFERENT_RESULT = (b'"end":7,"at":1282000,"result":0,', b'"end":7,"at":1282000,"result":-4,')


def diff(*words):
    return subprocess.run([*ADPTRACE, "diff", *map(str, words)], capture_output=True, text=True, timeout=60, check=False)


def changed(tmp_path, *replacements):
    """A copy of the sample in which some text is another one."""
    text = SAMPLE.read_bytes()
    for old, new in replacements:
        assert text.count(old) == 1
        text = text.replace(old, new)
    copy = tmp_path / "changed"
    copy.write_bytes(text)
    return copy


@pytest.mark.parametrize("sample", SAMPLES, ids=lambda sample: sample.name)
def test_a_recording_is_equal_to_itself(sample):
    done = diff(sample, sample)
    assert (done.returncode, done.stderr) == (0, "")
    assert "are equal in meaning" in done.stdout


def test_another_result_is_found(tmp_path):
    done = diff(SAMPLE, changed(tmp_path, DIFFERENT_RESULT))
    assert done.returncode == 1
    assert done.stdout.startswith(f"--- {SAMPLE}\n+++ {tmp_path}/changed\n@@ process 1, thread 1 @@\n")
    assert "result: 0 | -4" in done.stdout
    assert "1 call differs" in done.stdout


def test_options(tmp_path):
    other = changed(tmp_path, DIFFERENT_RESULT, (b'"end":22,"at":1486000,"result":7', b'"end":22,"at":1486000,"result":8'))
    first, every = diff(SAMPLE, other).stdout, diff("--all", SAMPLE, other).stdout
    assert "adp_of_a_later_version" not in first and "2 calls differ" in first
    assert "adp_of_a_later_version" in every and "2 calls differ" in every
    assert "1 call differs" in diff("--library-only", SAMPLE, other).stdout
    assert "1 call differs" in diff("--calls=adp_vlan_*", SAMPLE, other).stdout
    assert diff("--calls", "adp_mirror_*", SAMPLE, other).returncode == 0


@pytest.mark.parametrize("words, told", [
    ([], "two recordings"), (["one"], "two recordings"), (["a", "b", "c"], "two recordings"),
    (["--al", "a", "b"], "did you mean '--all'"), (["a", "b", "--calls"], "--calls needs PATTERN"),
    (["/does/not/exist", "/does/not/exist"], "/does/not/exist"), ([__file__, __file__], "line 1")])
def test_trouble(words, told):
    done = diff(*words)
    assert done.returncode == 2 and told in done.stderr
    assert done.stdout == ""


def test_a_damaged_recording_is_refused_or_compared(tmp_path):
    chance = random.Random(11)
    whole = SAMPLE.read_bytes()
    ends = set()
    for _ in range(20):
        text = bytearray(whole)
        for _ in range(chance.randrange(1, 4)):
            text[chance.randrange(len(text))] = chance.choice(b'0129",:{}[]-a')
        damaged = tmp_path / "damaged"
        damaged.write_bytes(text[:chance.randrange(len(text))] if chance.randrange(4) == 0 else text)
        ends.add(diff("--all", SAMPLE, damaged).returncode)
    assert {1, 2} <= ends <= {0, 1, 2}


def test_output_that_cannot_be_written_is_trouble():
    with open("/dev/full", "w", encoding="utf-8") as full:
        done = subprocess.run([*ADPTRACE, "diff", SAMPLE, SAMPLE], stdout=full, stderr=subprocess.PIPE, text=True,
                              timeout=60, check=False)
    assert done.returncode == 2 and "cannot be written" in done.stderr
