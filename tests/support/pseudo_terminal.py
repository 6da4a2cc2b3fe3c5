#!/usr/bin/env python3
"""Runs a command on a pseudo-terminal and prints what the terminal got. Exits with the status of the command.

usage: pseudo_terminal.py COMMAND [ARGUMENT]...
"""
import os
import pty
import subprocess
import sys
import termios
import threading

END = b"\0"  # No command under test prints it.


def run(command, columns=80, environment=None):
    """Returns what the terminal got, with "\\r\\n" at the end of each line, and the command's exit status."""
    parent, child = pty.openpty()
    termios.tcsetwinsize(child, (24, columns))
    process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=child, stderr=child, env=environment)

    # Some systems lose what was not yet read when the last user of a terminal closes it, so this one stays open.
    def mark_end():
        process.wait()
        os.write(child, END)

    waiter = threading.Thread(target=mark_end)
    waiter.start()
    output = b""
    while not output.endswith(END):
        output += os.read(parent, 65536)
    waiter.join()
    os.close(child)
    os.close(parent)
    return output[:-len(END)], process.returncode


def main():
    output, status = run(sys.argv[1:])
    sys.stdout.buffer.write(output)
    return status


if __name__ == "__main__":
    sys.exit(main())
