"""Callbacks that C holds: kept alive until C lets go of them, and nothing they raise gets there."""

from __future__ import annotations

import ctypes
import itertools
from typing import Any, Callable

from ._library import Destroy

_numbers = itertools.count(1)
_alive: dict[int, Any] = {}


@ctypes.CFUNCTYPE(None, ctypes.py_object)
def _raise(error: BaseException) -> None:
    raise error


def report(error: BaseException) -> None:
    """Hands an exception to sys.unraisablehook, as ctypes does with what a callback raises."""
    _raise(error)


def guarded(function: Callable[..., Any], otherwise: Any = None) -> Callable[..., Any]:
    """The function, answering `otherwise` in place of raising."""

    def call(_user_data: Any, *arguments: Any) -> Any:
        try:
            return function(*arguments)
        except BaseException as error:  # C is the caller
            report(error)
            return otherwise

    return call


@Destroy
def destroy(user_data: int) -> None:
    """What C calls once it has let go of a callback; the only one that is never let go of here."""
    _alive.pop(user_data, None)


def keep(thing: Any) -> int:
    """The user_data of a callback, which keeps `thing` alive until C calls destroy with it."""
    number = next(_numbers)
    _alive[number] = thing
    return number


def registered(
    kind: Any, function: Callable[..., Any], otherwise: Any = None
) -> tuple[Any, int, Any]:
    """The three arguments by which C takes a callback."""
    callback = kind(guarded(function, otherwise))
    return callback, keep(callback), destroy
