"""The headless port: a virtual clock and a scripted page, for tests."""

from __future__ import annotations

import ctypes
import enum
import json
import weakref
from typing import Any, Callable

from ._callbacks import registered
from ._facade import Presenter
from ._library import EvaluationFunction, LoadFunction, encoded, library, taken
from ._platform import Platform


class Load(enum.IntEnum):
    """How a page's load goes."""

    NOT_SCRIPTED = 0  # fails, and says so
    FINISHES = 1
    FAILS_BEFORE_COMMIT = 2
    FAILS_AFTER_COMMIT = 3
    HANGS = 4
    HANGS_AFTER_COMMIT = 5


class HeadlessPlatform(Platform):
    """A platform without a display, on which nothing happens by itself.

    What is not scripted fails. The thread that makes it is the main thread.

    :param background_threads: background tasks run at once on two threads of their own; else
        inside :meth:`settle`.
    :raises WrongState: there is a platform already.
    """

    def __init__(self, *, background_threads: bool = False) -> None:
        self._load: Callable[[str], Load] | None = None
        self._evaluate: Callable[[str], Any] | None = None
        super().__init__(
            lambda: library().headless_make(int(background_threads)), library().headless_free
        )
        # The platform keeps the functions and C does not keep the platform.
        weak = weakref.ref(self)

        def load(url: bytes) -> int:
            platform = weak()
            script = platform._load if platform is not None else None
            return int(script(url.decode())) if script is not None else Load.NOT_SCRIPTED

        def evaluate(script: bytes, answer: int) -> None:
            platform = weak()
            scripted = platform._evaluate if platform is not None else None
            if scripted is not None:
                value = json.dumps(scripted(script.decode()))
                library().text_set(answer, value.encode())

        library().headless_on_load(
            self._handle, *registered(LoadFunction, load, int(Load.NOT_SCRIPTED))
        )
        library().headless_on_evaluate(self._handle, *registered(EvaluationFunction, evaluate))
        self._presenter = Presenter(library().headless_presenter(self._handle))

    @property
    def presenter(self) -> Presenter:
        """Where checkouts are shown."""
        return self._presenter

    def settle(self) -> None:
        """Runs main-queue turns and background tasks until neither is left. Time stands still."""
        library().headless_settle(self._handle)

    def run_one_turn(self) -> bool:
        """Runs one main-queue turn; False: there was none."""
        ran = ctypes.c_bool()
        library().headless_run_one_turn(self._handle, ctypes.byref(ran))
        return ran.value

    def advance(self, seconds: float) -> None:
        """Moves time on, running what comes due at its own time."""
        library().headless_advance(self._handle, seconds)

    def set_now(self, seconds: float) -> None:
        """Sets the wall clock, in seconds since 1970-01-01 UTC; runs nothing."""
        library().headless_set_now(self._handle, seconds)

    def on_load(self, load: Callable[[str], Load] | None) -> None:
        """What each load of an address is answered with; None: nothing scripted."""
        self._load = load

    def on_evaluate(self, evaluate: Callable[[str], Any] | None) -> None:
        """What each script is answered with, any value of JSON; one that raises fails it."""
        self._evaluate = evaluate

    def page_navigate(self, url: str) -> None:
        """The youngest page goes to an address. :raises WrongState: there is no page."""
        library().headless_page_navigate(self._handle, encoded(url))

    def page_post(self, handler: str, body: Any) -> None:
        """The page posts a value of JSON. :raises WrongState: no page, or no such handler."""
        library().headless_page_post(self._handle, encoded(handler), json.dumps(body).encode())

    def page_scripts(self) -> list[str]:
        """The scripts the page was given so far. :raises WrongState: there is no page."""
        scripts: list[str] = json.loads(taken(library().headless_page_scripts(self._handle)))
        return scripts

    @property
    def screen_count(self) -> int:
        """How many screens are shown."""
        return int(library().headless_screen_count(self._handle))

    def install_scheme(self, scheme: str, *, accepts: bool = True) -> None:
        """An application for this scheme is there; accepts: whether its launches succeed."""
        library().headless_install_scheme(self._handle, encoded(scheme), accepts)

    def opened_urls(self) -> list[str]:
        """Every address another application was asked to open."""
        urls: list[str] = json.loads(taken(library().headless_opened_urls(self._handle)))
        return urls

    def become_active(self) -> None:
        """The customer comes back to this application, in a later turn."""
        library().headless_become_active(self._handle)
