"""Finds the C library, declares its functions and turns refusals into exceptions."""

from __future__ import annotations

import ctypes
import os
import sys
import threading
from ctypes import (
    CFUNCTYPE,
    POINTER,
    Structure,
    c_bool,
    c_char_p,
    c_double,
    c_int,
    c_size_t,
    c_void_p,
)
from pathlib import Path
from typing import Any

from ._errors import CheckoutError, InvalidArgument, LibraryNotFound, WrongState, WrongThread

VARIABLE = "ZORVIK_CHECKOUT_LIBRARY"
_MAJOR_VERSION = 2

# Handles and returned texts are c_void_p: ctypes would lose the address of a c_char_p.
Destroy = CFUNCTYPE(None, c_void_p)
TextFunction = CFUNCTYPE(None, c_void_p, c_char_p)
AnswerFunction = CFUNCTYPE(None, c_void_p, c_char_p, c_char_p)
LoadFunction = CFUNCTYPE(c_int, c_void_p, c_char_p)
EvaluationFunction = CFUNCTYPE(None, c_void_p, c_char_p, c_void_p)
VoidFunction = CFUNCTYPE(None, c_void_p)
ConditionFunction = CFUNCTYPE(c_bool, c_void_p)
UpdateOrder = CFUNCTYPE(None, c_void_p, *[c_char_p] * 5, c_void_p)
ListUPIApps = CFUNCTYPE(None, c_void_p, c_char_p, c_void_p)
EnquireTransaction = CFUNCTYPE(None, c_void_p, *[c_char_p] * 4, c_void_p)
CreateOrder = CFUNCTYPE(None, c_void_p, c_double, *[c_char_p] * 3, c_void_p)
CreateShopOrder = CFUNCTYPE(None, c_void_p, c_char_p, c_void_p)
AddressFunction = CFUNCTYPE(None, c_void_p, c_void_p)
UrlQuestion = CFUNCTYPE(c_bool, c_void_p, c_char_p)


class CoreServicesStruct(Structure):
    _fields_ = [
        ("size", c_size_t),
        ("user_data", c_void_p),
        ("destroy", Destroy),
        ("update_order", UpdateOrder),
        ("list_upi_apps", ListUPIApps),
        ("enquire_transaction", EnquireTransaction),
        ("create_order", CreateOrder),
        ("create_shop_order", CreateShopOrder),
        ("log_event", TextFunction),
        ("page_address", AddressFunction),
        ("response_address", AddressFunction),
        ("is_return_url", UrlQuestion),
        ("set_environment_url", TextFunction),
    ]


class CheckoutOptionsStruct(Structure):
    _fields_ = [
        (name, c_char_p)
        for name in ("order_token", "wallet_code", "payment_flow", "payment_mode_code", "bank_code")
    ]


class GtkOptionsStruct(Structure):
    _fields_ = [
        ("size", c_size_t),
        ("application_id", c_char_p),
        ("safe_area_top", c_double),
        ("safe_area_left", c_double),
        ("safe_area_bottom", c_double),
        ("safe_area_right", c_double),
        ("page_data", c_int),
        ("without_spare_page", c_bool),
    ]


def refuse(result: int, _function: Any = None, _arguments: Any = None) -> None:
    if result == 0:
        return
    kind = {1: InvalidArgument, 2: WrongState, 3: WrongThread}.get(result, CheckoutError)
    raise kind(last_error())


def _refuse_null(result: int | None, _function: Any, _arguments: Any) -> int:
    if not result:
        refuse(library().last_result())
        raise CheckoutError(last_error())
    return result


_CALLBACK = [c_void_p, Destroy]  # what follows every callback

# What each function returns ("result": ZORVIK_OK or an exception, "made": a pointer or an
# exception), and what it takes.
_FUNCTIONS: dict[str, tuple[Any, list[Any]]] = {
    "version": (c_char_p, []),
    "last_error": (c_char_p, []),
    "last_result": (c_int, []),
    "string_free": (None, [c_void_p]),
    "text_set": ("result", [c_void_p, c_char_p]),
    "set_console": ("result", [TextFunction, *_CALLBACK]),
    "make_order_token": ("made", [c_char_p]),
    "set_core_services": ("result", [POINTER(CoreServicesStruct)]),
    "completion_succeed": ("result", [c_void_p, c_char_p]),
    "completion_fail": ("result", [c_void_p, c_char_p]),
    "completion_free": (None, [c_void_p]),
    "delegate_make": ("made", [TextFunction, *_CALLBACK]),
    "delegate_free": (None, [c_void_p]),
    "set_delegate": ("result", [c_void_p]),
    "set_environment_url": ("result", [c_char_p]),
    "initialize": ("result", [c_char_p]),
    "checkout": ("result", [c_void_p, POINTER(CheckoutOptionsStruct)]),
    "device_back": ("result", []),
    "create_order": ("result", [c_double, *[c_char_p] * 3, AnswerFunction, *_CALLBACK]),
    "create_shop_order": ("result", [c_char_p, AnswerFunction, *_CALLBACK]),
    "presenter_free": (None, [c_void_p]),
    "headless_make": ("made", [c_int]),
    "headless_free": ("result", [c_void_p]),
    "headless_presenter": ("made", [c_void_p]),
    "headless_settle": ("result", [c_void_p]),
    "headless_run_one_turn": ("result", [c_void_p, POINTER(c_bool)]),
    "headless_advance": ("result", [c_void_p, c_double]),
    "headless_set_now": ("result", [c_void_p, c_double]),
    "headless_on_load": ("result", [c_void_p, LoadFunction, *_CALLBACK]),
    "headless_on_evaluate": ("result", [c_void_p, EvaluationFunction, *_CALLBACK]),
    "headless_page_navigate": ("result", [c_void_p, c_char_p]),
    "headless_page_post": ("result", [c_void_p, c_char_p, c_char_p]),
    "headless_page_scripts": ("made", [c_void_p]),
    "headless_screen_count": (c_size_t, [c_void_p]),
    "headless_install_scheme": ("result", [c_void_p, c_char_p, c_bool]),
    "headless_opened_urls": ("made", [c_void_p]),
    "headless_become_active": ("result", [c_void_p]),
}

_GTK_FUNCTIONS: dict[str, tuple[Any, list[Any]]] = {
    "gtk_make": ("made", [POINTER(GtkOptionsStruct)]),
    "gtk_free": ("result", [c_void_p]),
    "gtk_open_window": (
        "made",
        [c_void_p, c_char_p, c_double, c_double, VoidFunction, *_CALLBACK],
    ),
    "gtk_close_window": ("result", [c_void_p, c_void_p]),
    "gtk_presenter": ("made", [c_void_p, c_void_p]),
    "gtk_run": ("result", [c_void_p]),
    "gtk_quit": ("result", [c_void_p]),
    "gtk_run_until": (c_int, [c_void_p, ConditionFunction, c_void_p, c_double]),
    "gtk_save_png": (c_int, [c_void_p, c_void_p, c_char_p]),
}


class Library:
    """The functions of the C library, without their prefix."""

    def __init__(self, path: str, has_gtk: bool) -> None:
        library = ctypes.CDLL(path)
        self.has_gtk = has_gtk
        functions = {**_FUNCTIONS, **(_GTK_FUNCTIONS if has_gtk else {})}
        for name, (returns, takes) in functions.items():
            function = getattr(library, f"zorvik_{name}")
            function.argtypes = takes
            if returns == "result":
                function.restype, function.errcheck = c_int, refuse
            elif returns == "made":
                function.restype, function.errcheck = c_void_p, _refuse_null
            else:
                function.restype = returns
            setattr(self, name, function)

    def __getattr__(self, name: str) -> Any:  # for the type checker: set above
        raise AttributeError(name)


_lock = threading.Lock()
_loaded: Library | None = None
_wants_gtk = False


def want_gtk() -> None:
    """From now on the library is the one with the GTK port."""
    global _wants_gtk
    with _lock:
        if _loaded is not None and not _loaded.has_gtk:
            raise WrongState(
                "the library without the GTK port is in use already: import zorvik_checkout.gtk "
                "before the first call"
            )
        _wants_gtk = True


def library() -> Library:
    global _loaded
    with _lock:
        if _loaded is None:
            _loaded = _load(_wants_gtk)
        return _loaded


def _load(has_gtk: bool) -> Library:
    name = f"libzorvik_c{'_gtk' if has_gtk else ''}.so.{_MAJOR_VERSION}"
    given = os.environ.get(VARIABLE)
    if given:
        path = Path(given)
        candidates = [str(path / name if path.is_dir() else path)]
    else:
        roots = (sys.prefix, "/usr/local")
        folders = [Path(root, folder) for root in roots for folder in ("lib", "lib64")]
        candidates = [str(folder / name) for folder in folders if (folder / name).exists()]
        candidates.append(name)  # the loader's own path
    problems = []
    for candidate in candidates:
        try:
            return Library(candidate, has_gtk)
        except (OSError, AttributeError) as error:
            problems.append(str(error))
    raise LibraryNotFound(
        f"{name} was not found ({'; '.join(problems)}). Install the checkout component "
        f"(cmake --install build --prefix {sys.prefix}, or a prefix the loader searches), or set "
        f"{VARIABLE} to the folder that holds it."
    )


def last_error() -> str:
    return bytes(library().last_error()).decode()


def encoded(text: str | None) -> bytes | None:
    if text is None:
        return None
    if "\0" in text:
        raise InvalidArgument("a text holds a NUL character")
    return text.encode()


def taken(pointer: int) -> str:
    """A returned text as a str; the C one is freed."""
    text = ctypes.string_at(pointer).decode()
    library().string_free(pointer)
    return text
