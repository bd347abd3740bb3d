# SPDX-License-Identifier: Apache-2.0
"""Progress bars as tqdm has them, for long operations."""

from __future__ import annotations

from typing import Any, Optional


class Bar:
    """What a caller gave as `progress`: a bar with update(n), or tqdm.tqdm or what is like it, which makes one."""

    def __init__(self, progress: Any, unit: str, what: str) -> None:
        self._make: Any = None
        self._bar: Any = None
        self._done = 0
        self._unit = unit
        self._what = what
        if isinstance(progress, type) or not hasattr(progress, "update"):
            self._make = progress
        else:
            self._bar = progress

    def to(self, done: int, total: Optional[int]) -> None:
        """So much is done, of `total` where that is known."""
        if self._bar is None:
            self._bar = self._make(total=total, unit=self._unit, unit_scale=True, desc=self._what)
        elif total is not None and getattr(self._bar, "total", total) != total:
            self._bar.total = total
        self._bar.update(done - self._done)
        self._done = done

    def close(self) -> None:
        """The end of the operation; a bar that was given stays open."""
        if self._make is not None and self._bar is not None:
            self._bar.close()
