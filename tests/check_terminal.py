#!/usr/bin/env python3
"""The interactive tool at a pseudo-terminal: lines are edited, completed and taken again; Ctrl-C gives
up a line, the end of the input or of the terminal ends the program.
usage: check_terminal.py OSTRUM ON|OFF, which says whether it was built with such lines"""
import os
import sys
import tempfile
import time

try:
    import pexpect
except ImportError:
    sys.exit(77)

ostrum = sys.argv[1]
if sys.argv[2] == "OFF":
    sys.exit(77)


def start():
    child = pexpect.spawn(ostrum, timeout=20, encoding="utf-8", dimensions=(24, 100))
    child.expect_exact("ostrum> ")
    return child


def type_line(child, keys, *answers):
    """Sends keys, then wants each answer in turn and the next prompt."""
    child.send(keys + "\r")
    for answer in answers:
        child.expect_exact(answer)
    child.expect_exact("ostrum> ")


def check_editing(child):
    # Commands, directories with their quotes, files of the wanted kind, qualifiers.
    type_line(child, "comp\tde\tla\t/no-o\t")
    type_line(child, "set show", "SOURCE     deep/lamp.tl")
    child.send("show \t\t")
    child.expect("SYMBOL +FRAME +DATA +TREE")
    type_line(child, "tr\tcharging", "No tree charging")
    # A line taken again and changed.
    type_line(child, "convert 1.5V", "1500")
    type_line(child, "\x1b[A mV", "1500mV")
    # Only a value that is missing is asked for, and its files are completed too.
    child.send("compile\r")
    child.expect_exact("SOURCES = ")
    type_line(child, "bu\t")
    type_line(child, "list", "bulb.kob")


def check_interrupt(child):
    child.send("convert 9V\x03")
    child.expect_exact("ostrum> ")
    assert "a count of" not in child.before, child.before
    type_line(child, "convert 2V", "2V")
    type_line(child, "\x1b[A", "convert 2V", "2V")


def check_endless_line(child):
    child.send("@/dev/zero\r")
    child.expect_exact("<< Reading commands")
    time.sleep(0.5)  # any time after the start will do
    child.send("\x03")
    child.expect_exact("ostrum> ")
    type_line(child, "convert 3V", "3V")


def check_end(child, status):
    child.send("\x04")
    child.expect(pexpect.EOF)
    child.close()
    assert child.exitstatus == status, child.exitstatus


def check_lost_terminal():
    child = start()
    os.close(child.child_fd)
    for _ in range(100):
        if os.waitpid(child.pid, os.WNOHANG)[0] == child.pid:
            return
        time.sleep(0.1)
    raise AssertionError("runs on without its terminal")


def main():
    with tempfile.TemporaryDirectory() as scratch:
        os.chdir(scratch)
        os.mkdir("deep")
        for name in ("deep/lamp.tl", "bulb.tl"):
            with open(name, "w", encoding="ascii") as source:
                source.write("MODULE %s\nPRIVATE\n" % name[-7:-3].strip("/"))
        os.environ.update(TERM="vt100", INPUTRC="/dev/null")
        child = start()
        check_editing(child)
        check_interrupt(child)
        check_endless_line(child)
        check_end(child, 1)  # a tree was not found
        check_end(start(), 0)
        check_lost_terminal()


main()
