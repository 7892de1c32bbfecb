"""The GTK port. Import this before the package's first call: it chooses the library that has it.

The platform's work is done by GLib's default main context, so a ``Gtk.Application`` of the host's
runs it; :meth:`GtkPlatform.run` is for a host without a main loop.
"""

from __future__ import annotations

import ctypes
import enum
import os
from typing import Any, Callable

from ._callbacks import guarded, registered
from ._facade import Presenter
from ._library import (
    ConditionFunction,
    GtkOptionsStruct,
    VoidFunction,
    encoded,
    library,
    refuse,
    want_gtk,
)
from ._platform import Platform

want_gtk()

__all__ = ["GtkPlatform", "PageData", "Window"]

_capsule_pointer = ctypes.pythonapi.PyCapsule_GetPointer
_capsule_pointer.restype = ctypes.c_void_p
_capsule_pointer.argtypes = [ctypes.py_object, ctypes.c_char_p]


class Window:
    """A window of the platform's own, until it is closed or the platform is."""

    def __init__(self, pointer: int) -> None:
        self._pointer = pointer


def _window_pointer(window: Any) -> int:
    """The GtkWindow* of a Window, or of PyGObject's Gtk.Window."""
    if isinstance(window, Window):
        return window._pointer
    capsule = getattr(window, "__gpointer__", None)
    if capsule is None:
        raise TypeError(f"a Gtk.Window is wanted, not {type(window).__name__}")
    return int(_capsule_pointer(capsule, None))


class PageData(enum.IntEnum):
    """Where pages keep cookies and stored data."""

    IN_MEMORY = 0  #: shared by all pages until the platform ends
    ON_DISK = 1  #: in the user's folders, for the next run too
    FRESH = 2  #: for one page alone, as a kiosk wants it


class GtkPlatform(Platform):
    """The desktop platform on GTK 4 and WebKitGTK.

    :param application_id: names the folder of the stored defaults.
    :param safe_area: points kept free at the top, left, bottom and right.
    :param page_data: where pages keep cookies and stored data.
    :param spare_page: keeps a web process at hand, so that the next checkout opens at once.
    :raises WrongState: there is a platform already.
    :raises CheckoutError: there is no display, or application_id cannot name a folder.
    """

    def __init__(
        self,
        application_id: str,
        *,
        safe_area: tuple[float, float, float, float] = (0, 0, 0, 0),
        page_data: PageData = PageData.IN_MEMORY,
        spare_page: bool = True,
    ) -> None:
        options = GtkOptionsStruct(
            ctypes.sizeof(GtkOptionsStruct),
            encoded(application_id),
            *safe_area,
            page_data,
            not spare_page,
        )
        super().__init__(lambda: library().gtk_make(ctypes.byref(options)), library().gtk_free)

    def presenter(self, window: Any) -> Presenter:
        """Where checkouts are shown in this window: PyGObject's Gtk.Window or a :class:`Window`.

        :raises WrongState: the window was destroyed.
        """
        return Presenter(library().gtk_presenter(self._handle, _window_pointer(window)))

    def open_window(
        self, title: str, width: float, height: float, closed: Callable[[], None] | None = None
    ) -> Window:
        """An empty window, for a host without one; closed: the customer closed it."""
        callback = registered(VoidFunction, closed if closed is not None else lambda: None)
        return Window(
            library().gtk_open_window(self._handle, encoded(title), width, height, *callback)
        )

    def close_window(self, window: Window) -> None:
        """Nothing for a window of the host's own."""
        library().gtk_close_window(self._handle, _window_pointer(window))

    def run(self) -> None:
        """Runs the main loop until :meth:`quit`."""
        library().gtk_run(self._handle)

    def quit(self) -> None:
        """Ends :meth:`run`."""
        library().gtk_quit(self._handle)

    def run_until(self, condition: Callable[[], bool], seconds: float) -> bool:
        """Runs the main loop until the condition holds; False: the time passed first."""
        callback = ConditionFunction(guarded(condition, False))
        return _holds(library().gtk_run_until(self._handle, callback, None, seconds))

    def save_png(self, window: Any, path: str | os.PathLike[str]) -> bool:
        """Writes what the window shows; False: nothing yet, or the file cannot be written."""
        pointer = _window_pointer(window)
        return _holds(library().gtk_save_png(self._handle, pointer, os.fsencode(path)))


def _holds(result: int) -> bool:
    failed = 4
    if result not in (0, failed):
        refuse(result)
    return result == 0
