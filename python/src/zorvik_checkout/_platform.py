"""What the two platforms share: one at a time, closed once, on the main thread."""

from __future__ import annotations

import atexit
import warnings
import weakref
from typing import Any, Callable

from ._errors import CheckoutError, WrongState
from ._facade import set_console
from ._library import library
from ._services import set_core_services

# Platforms that were let go of where they could not be closed; closed before the next one is made.
_abandoned: list[tuple[Callable[[int], None], int]] = []
_current: weakref.ref[Platform] | None = None


class Platform:
    """A context manager; leaving it closes the platform."""

    def __init__(self, make: Callable[[], int], free: Callable[[int], None]) -> None:
        global _current
        while _abandoned:
            free_earlier, earlier = _abandoned[-1]
            free_earlier(earlier)
            _abandoned.pop()
        self._pointer: int | None = make()
        self._free = free
        _current = weakref.ref(self)

    @property
    def _handle(self) -> int:
        if self._pointer is None:
            raise WrongState("the platform is closed")
        return self._pointer

    def close(self) -> None:
        """Ends the platform; what is pending is dropped. Nothing for one that is closed.

        :raises WrongState: inside a callback, or while the platform is being run.
        """
        if self._pointer is not None:
            self._free(self._pointer)
            self._pointer = None

    def __enter__(self: Any) -> Any:
        return self

    def __exit__(self, *_error: object) -> None:
        self.close()

    def __del__(self) -> None:
        pointer = getattr(self, "_pointer", None)
        if pointer is None:
            return
        warnings.warn(f"{type(self).__name__} was not closed", ResourceWarning, source=self)
        try:
            self.close()
        except CheckoutError:
            _abandoned.append((self._free, pointer))


@atexit.register
def _end() -> None:
    """Nothing calls back into an interpreter that is ending."""
    platform = _current() if _current is not None else None
    if platform is None:
        return
    set_core_services(None)
    set_console(None)
    try:
        platform.close()
    except CheckoutError:
        pass
