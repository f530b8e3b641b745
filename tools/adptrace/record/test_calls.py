"""What the recording has of calls: their order, nesting, threads, values; and that the program notices nothing."""

import collections

from conftest import BUILD, command_of

SET, GET = "adp_double_tag_set", "adp_double_tag_get"
DRIVER_SET, DRIVER_GET = "user_port_dtag_mode_set", "user_port_dtag_mode_get"
BOARD = ["adp_set_max_phy_port_num", "adp_add_phy_port", "adp_add_phy_port"]
PHYSICAL_PORT, MODE = 9, 3
THREADS, CALLS_OF_THREAD = 4, 50


def nested(run):
    """(name, name of the call around it) of each call."""
    names = {line["begin"]: line["call"] for line in run.of_kind("begin")}
    return [(line["call"], names.get(line.get("within"))) for line in run.of_kind("begin")]


def test_each_call_has_a_line_before_and_after_it_with_its_values(recorder):
    run = recorder.program("calls")
    assert run.status == 0
    assert nested(run) == [(name, None) for name in BOARD] + [
        (SET, None), (DRIVER_SET, SET), (GET, None), (DRIVER_GET, GET)]  # fmt: skip
    lines = [line for line in run.lines if next(iter(line)) in ("begin", "end")]
    assert [next(iter(line.items())) for line in lines[6:]] == [
        ("begin", 4), ("begin", 5), ("end", 5), ("end", 4), ("begin", 6), ("begin", 7), ("end", 7), ("end", 6)]  # fmt: skip
    assert lines[6]["arguments"] == {"intf": 1, "mode": MODE}
    assert lines[7]["arguments"] == {"unit": 0, "zero": 0, "port": PHYSICAL_PORT, "mode": MODE}
    assert [(line["result"], line["outputs"]) for line in lines[-2:]] == [(0, {"mode": MODE})] * 2
    times = [line["at"] for line in run.lines[1:]]
    assert times == sorted(times) and times[0] > 0


def test_header_process_and_exit_say_what_ran(recorder):
    run = recorder.program("calls")
    first, process, last = run.lines[0], run.lines[1], run.lines[-1]
    assert first["adptrace"] == 1 and first["command"] == command_of("adptrace_test_program", "calls")
    is_target = b"\x02\x01" not in (BUILD / "adptrace").read_bytes()[4:6]
    assert (first["byte_order"], first["word_bits"]) == (("big", 32) if is_target else ("little", 64))
    assert process["program"] == str(BUILD / "adptrace_test_program") and process["parent"] == 0
    assert bytes.fromhex(process["library"]) in (BUILD / "libadp.so").read_bytes()
    assert last["exit"] == process["process"] and last["status"] == 0
    assert run.errors == f"adptrace: {run.path}: 7 calls, 2 KiB.\n"


def test_the_port_map_is_written_when_a_call_has_changed_it(recorder):
    run = recorder.program("calls")
    kinds = [next(iter(line)) for line in run.lines]
    assert [index for index, kind in enumerate(kinds) if kind == "board"] == [4, 7, 10]
    assert [row["phy"] for row in run.of_kind("board")[-1]["board"]] == [0, PHYSICAL_PORT, PHYSICAL_PORT + 1]


def test_a_library_call_of_a_callback_is_within_the_driver_call(recorder):
    run = recorder.program("callback")
    assert run.status == 0
    assert nested(run)[4:] == [
        (SET, None), (DRIVER_SET, SET), ("linkscan_handle_cb", DRIVER_SET), (SET, "linkscan_handle_cb"), (DRIVER_SET, SET),
    ]  # fmt: skip
    assert run.of_kind("begin")[3]["arguments"] == {"handler": "set"}


def test_threads_have_small_numbers_and_their_own_nesting(recorder):
    run = recorder.program("threads")
    assert run.status == 0
    begun = run.of_kind("begin")
    assert len({line["begin"] for line in begun}) == len(begun) == len(run.of_kind("end"))
    of_threads = collections.Counter(line["thread"] for line in begun)
    assert of_threads == {1: len(BOARD)} | {number + 2: 2 * CALLS_OF_THREAD for number in range(THREADS)}
    threads = {line["begin"]: line["thread"] for line in begun}
    assert all(threads[line["within"]] == line["thread"] for line in begun if "within" in line)


def test_a_thread_that_is_cancelled_in_a_call_leaves_it_without_an_end(recorder):
    run = recorder.program("cancel")
    assert run.status == 0
    ended = {line["end"] for line in run.of_kind("end")}
    assert [line["call"] for line in run.of_kind("begin") if line["begin"] not in ended] == [SET, DRIVER_SET]
    assert nested(run)[-2:] == [(SET, None), (DRIVER_SET, SET)]


def test_a_handler_that_makes_calls_disturbs_nothing(recorder):
    run = recorder.program("signals")
    assert run.status == 0
    assert run.calls.count(SET) == 2000
    assert set(run.calls) <= {*BOARD, SET, GET, DRIVER_SET, DRIVER_GET}


def test_a_handler_that_jumps_out_of_a_call_leaves_it(recorder):
    run = recorder.program("jump")
    assert run.status == 0
    assert nested(run)[-4:] == [(SET, None), (DRIVER_SET, SET), (SET, None), (DRIVER_SET, SET)]


def test_errno_is_the_calls_own(recorder):
    assert recorder.program("errno").status == 0


def test_a_count_beyond_the_memory_is_not_followed(recorder):
    run = recorder.program("count")
    assert run.status == 0
    arguments = run.of_kind("begin")[-1]["arguments"]
    assert arguments["count"] == 1000000
    assert arguments["members"] == [1, 2]


def test_an_address_of_nothing_is_not_followed(recorder):
    run = recorder.program("nowhere")
    assert run.status == 0
    assert [line["arguments"] for line in run.of_kind("begin") if line["call"] == GET][0]["mode"] is None


def test_the_loggers_values_arrive_and_its_text_is_recorded(recorder):
    run = recorder.program("log")
    assert (run.status, run.output) == (0, "1 two 3.5 4 5 6 7 8 9.25 -1\n")
    assert run.of_kind("begin")[-1]["arguments"] == {
        "level": 5, "module": 6, "word": "WORD", "format": "%d %s %.1f %d %d %d %d %d %.2f %lld", "text": run.output.strip(),
    }  # fmt: skip


def test_a_library_that_is_loaded_privately_and_again_is_recorded(recorder):
    run = recorder.command(*command_of("adptrace_test_loader", BUILD / "libadptrace_test_plugin.so"))
    assert run.status == 0
    board = [("adp_set_max_phy_port_num", None), ("adp_add_phy_port", None)]
    assert nested(run) == [*board, (SET, None), (DRIVER_SET, SET), *board]
