# SPDX-License-Identifier: Apache-2.0
"""python -m oxaifc: the program, as it is without Python."""

from __future__ import annotations

import os
import sys


def main() -> None:
    """Becomes the program; never returns."""
    program = os.path.join(os.path.dirname(os.path.abspath(__file__)), "bin", "oxaifc")
    os.execv(program, [program, *sys.argv[1:]])


if __name__ == "__main__":
    main()
