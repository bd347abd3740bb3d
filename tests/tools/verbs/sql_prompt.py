# SPDX-License-Identifier: Apache-2.0
"""The prompt of "oxaifc sql" at a terminal: Ctrl-C while a line is typed, and while a statement runs.

Usage: sql_prompt.py OXAIFC MODEL.ifc

Prints what was shown where something is missing, else "checked".
"""
import os
import pty
import select
import sys
import time

ENDLESS = "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM c) SELECT count(*) FROM c;\n"


def main(program, model):
    process, terminal = pty.fork()
    if process == 0:
        os.execv(program, [program, "sql", model])
    shown = ""

    def wait(text):
        """What is shown up to this text."""
        nonlocal shown
        end = time.monotonic() + 20
        while text not in shown and time.monotonic() < end:
            if select.select([terminal], [], [], 0.1)[0]:
                try:
                    shown += os.read(terminal, 65536).decode(errors="replace")
                except OSError:   # the program has ended
                    break
        before, found, shown_after = shown.partition(text)
        if not found:
            print(f"{text!r} is missing behind {before[-500:]!r}")
            sys.exit(1)
        shown = shown_after
        return before

    wait("sql> ")
    os.write(terminal, b"SELECT half\n")
    wait("...> ")
    os.write(terminal, b"\x03")   # drops what was typed
    wait("sql> ")
    os.write(terminal, ENDLESS.encode())
    wait("FROM c;")
    time.sleep(0.3)               # for the statement to run
    os.write(terminal, b"\x03")
    wait("interrupted")
    wait("sql> ")
    os.write(terminal, b"SELECT 7 AS seven;\n")
    wait("seven\r\n    7")
    os.write(terminal, b".quit\n")
    ended, status = os.waitpid(process, 0)
    print("checked" if status == 0 else f"ended with {status}")
    return 0 if status == 0 else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
