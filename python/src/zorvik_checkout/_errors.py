"""The exceptions of refused calls."""

from __future__ import annotations


class CheckoutError(Exception):
    """A call was refused; its text says why."""


class InvalidArgument(CheckoutError, ValueError):
    """An argument is missing, not text, or not the JSON that was asked for."""


class WrongState(CheckoutError, RuntimeError):
    """No platform or a second one, no page, a completion that was answered already."""


class WrongThread(CheckoutError, RuntimeError):
    """Not the main thread, the one that made the platform."""


class LibraryNotFound(CheckoutError, ImportError):
    """The checkout's C library is not where it was looked for."""
