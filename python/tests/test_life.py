# SPDX-License-Identifier: Apache-2.0
"""Memory, threads, Ctrl-C and pickles."""

from __future__ import annotations

import _thread
import gc
import io
import os
import pickle
import resource
import signal
import sys
import threading
import time
import weakref
from pathlib import Path
from typing import Any, Callable

import oxaifc
import pytest
from conftest import HOUSE, many_walls
from oxaifc import Derived, TypedValue, util


def resident() -> int:
    """Bytes of this process in memory."""
    with open("/proc/self/statm", encoding="ascii") as file:
        return int(file.read().split()[1]) * resource.getpagesize()


def test_ten_thousand_opens_leave_nothing() -> None:
    data = HOUSE.encode()

    def use() -> None:
        model = oxaifc.open(data, threads=1)
        wall = model.by_type("IfcWall")[0]
        _ = (wall.Name, wall[0], repr(wall), util.get_psets(wall), wall.IsDefinedBy, model[10].EnumerationValues)
        try:
            _ = wall.Nope
        except AttributeError:
            pass

    for _ in range(500):
        use()
    gc.collect()
    blocks, size = sys.getallocatedblocks(), resident()
    for _ in range(10_000):
        use()
    gc.collect()
    assert sys.getallocatedblocks() - blocks < 500
    assert resident() - size < 16 << 20


def test_references_are_given_back(house: oxaifc.Model) -> None:
    counts = [sys.getrefcount(value) for value in (house, Derived, None)]
    for _ in range(1000):
        label = TypedValue("IfcLabel", "x")
        house[8].NominalValue = label
        _ = (house[14].Dimensions, house[3].Description, house.by_type("IfcRoot"), house[3] == house[4], hash(house[3]))
        for wrong in ("Nam", "name"):
            with pytest.raises(AttributeError):
                setattr(house[3], wrong, None)
    after = [sys.getrefcount(value) for value in (house, Derived, None)]
    assert all(b - a < 50 for a, b in zip(counts, after)) and sys.getrefcount(label) <= 3


def test_a_model_goes_with_its_last_entity() -> None:
    model = oxaifc.open(HOUSE.encode())
    watch, wall = weakref.ref(model), model[3]
    del model
    assert watch() is not None and wall.Name == "South"
    del wall
    assert watch() is None


def test_several_threads_read_one_model() -> None:
    model = oxaifc.open(many_walls(2000))
    results: list[object] = []

    def read() -> None:
        for _ in range(5):
            names = [wall.Name for wall in model.by_type("IfcWall")]
            selected = model.select("IfcWall, Name=Wall 7")
            results.append((len(names), names[-1], selected[0].id(), model.sql("SELECT count(*) FROM IfcWall")[0][0]))

    threads = [threading.Thread(target=read) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert results == [(2000, "Wall 2000", 7, 2000)] * 20


def test_readers_writers_and_changes_take_turns() -> None:
    model = oxaifc.open(many_walls(3000))
    other = oxaifc.open(many_walls(3000))
    faults: list[BaseException] = []
    sizes: list[int] = []

    def guarded(work: Callable[[], object]) -> Callable[[], None]:
        def run() -> None:
            try:
                for _ in range(10):
                    work()
            except BaseException as error:  # pylint: disable=broad-except
                faults.append(error)

        return run

    def write() -> None:
        file = io.BytesIO()
        model.write(file)
        sizes.append(len(oxaifc.open(file.getvalue(), threads=1)))

    works = [
        write,
        lambda: model.create_entity("IfcWall", Name="new"),
        lambda: setattr(model[1], "Name", "y"),
        lambda: model.select("IfcWall, Name=y"),
        lambda: oxaifc.diff(model, other),
        lambda: oxaifc.diff(other, model),
        lambda: model.check(strict=True, levels=["schema"]),
        lambda: model.remove(model.create_entity("IfcWall")),
    ]
    threads = [threading.Thread(target=guarded(work)) for work in works]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join(120)
    assert faults == [] and not any(thread.is_alive() for thread in threads)
    assert len(model) == 3010 and all(3000 <= size <= 3011 for size in sizes)


def test_other_threads_run_while_a_file_is_read() -> None:
    data, ticks, done = many_walls(60_000), [0], threading.Event()

    def tick() -> None:
        while not done.is_set():
            ticks[0] += 1
            time.sleep(0.001)

    thread = threading.Thread(target=tick)
    thread.start()
    before, begin = ticks[0], time.monotonic()
    oxaifc.open(data)
    ran, took = ticks[0] - before, time.monotonic() - begin
    done.set()
    thread.join()
    assert ran > took * 1000 / 20


class Pause(io.BytesIO):
    """A file that sends Ctrl-C once a part of it was read or written, and then is slow."""

    def __init__(self, data: bytes = b"") -> None:
        super().__init__(data)
        self.calls = 0

    def _pause(self) -> None:
        self.calls += 1
        if self.calls == 2:
            os.kill(os.getpid(), signal.SIGINT)
        if self.calls > 1:
            time.sleep(0.05)

    def read(self, *_: Any) -> bytes:
        self._pause()
        return super().read(10_000)

    def write(self, data: Any) -> int:
        self._pause()
        return super().write(data)


def test_ctrl_c_ends_a_read() -> None:
    data = many_walls(60_000)
    with pytest.raises(KeyboardInterrupt):
        oxaifc.open(Pause(data))


def interrupted(work: Callable[[], object], after: float) -> float:
    """Seconds from Ctrl-C to the end of the work, which it has to end."""
    at: list[float] = []
    ended = False

    def interrupt() -> None:
        at.append(time.monotonic())
        _thread.interrupt_main()

    timer = threading.Timer(after, interrupt)
    timer.start()
    try:
        with pytest.raises(KeyboardInterrupt):
            work()
            ended = True
            time.sleep(5)   # for the Ctrl-C that comes too late
        assert not ended, "the work ended by itself"
        return time.monotonic() - at[0]
    finally:
        timer.cancel()


def test_ctrl_c_ends_a_statement() -> None:
    model = oxaifc.open(many_walls(3000))
    statement = "SELECT count(*) FROM IfcWall a, IfcWall b, IfcWall c WHERE a.Name < b.Name AND b.Name < c.Name"
    assert interrupted(lambda: model.sql(statement), 0.3) < 4
    assert model.sql("SELECT count(*) FROM IfcWall")[0] == (3000,)
    with pytest.raises(oxaifc.SqlError):
        model.sql(statement, timeout=0.2)


def test_ctrl_c_ends_a_comparison() -> None:
    old, new = oxaifc.open(many_walls(100_000)), oxaifc.open(many_walls(100_001))
    assert interrupted(lambda: oxaifc.diff(old, new), 0.03) < 4
    new = oxaifc.open(many_walls(3))
    assert len(oxaifc.diff(new, new).changed) == 0


def test_ctrl_c_ends_a_wait(house: oxaifc.Model) -> None:
    class Waiting:
        def update(self, n: int) -> None:
            begun.set()
            end.wait(20)

    begun, end = threading.Event(), threading.Event()
    thread = threading.Thread(target=lambda: house.write(io.BytesIO(), progress=Waiting()))
    thread.start()
    assert begun.wait(20)
    try:
        assert interrupted(lambda: house[3].Name, 0.2) < 4
    finally:
        end.set()
        thread.join()
    assert house[3].Name == "South"


def test_pickles_are_paths(house: oxaifc.Model, house_path: Path) -> None:
    model = oxaifc.open(house_path)
    data = pickle.dumps((model, model[3], model[8].NominalValue, Derived, model.errors))
    assert len(data) < 1000
    again, wall, value, derived, _ = pickle.loads(data)
    assert (again.path, wall.Name, wall.file is again, value, derived is Derived) == (
        str(house_path), "South", True, TypedValue("IfcLabel", "F 90"), True)
    with pytest.raises(pickle.PicklingError, match="opened from none"):
        pickle.dumps(house)
    model[3].Name = "x"
    with pytest.raises(pickle.PicklingError, match="was changed"):
        pickle.dumps(model)
    house_path.write_text(HOUSE.replace("South", "Souths"))
    with pytest.raises(oxaifc.FileError, match="was changed since"):
        pickle.loads(data)
    house_path.unlink()
    with pytest.raises(FileNotFoundError):
        pickle.loads(data)


def test_exceptions_are_pickled(house: oxaifc.Model) -> None:
    for ask in (lambda: house.by_type("IfcWal"), lambda: house[99], lambda: house.select(",")):
        with pytest.raises(oxaifc.Error) as caught:
            ask()
        copy = pickle.loads(pickle.dumps(caught.value))
        assert (type(copy), str(copy), vars(copy)) == (type(caught.value), str(caught.value), vars(caught.value))
