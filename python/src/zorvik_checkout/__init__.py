"""A payment checkout for Python applications.

A host makes a platform, sets its core services and a receiver of results, and starts a checkout
with an order token::

    import zorvik_checkout

    with zorvik_checkout.HeadlessPlatform() as platform:
        zorvik_checkout.set_core_services(MyServices())
        zorvik_checkout.set_delegate(print)
        zorvik_checkout.checkout(platform.presenter, order_token=token)
        platform.settle()

:class:`HeadlessPlatform` has a virtual clock and a scripted page, for tests. Applications with
windows import :class:`zorvik_checkout.gtk.GtkPlatform` before they use anything else.

The thread that makes a platform is the main thread until that platform is closed. Everything is
called there unless it says "any thread". A refused call raises a :class:`CheckoutError`. What a
callback raises is reported by :data:`sys.unraisablehook` and goes no further.
"""

from ._errors import CheckoutError, InvalidArgument, LibraryNotFound, WrongState, WrongThread
from ._facade import (
    Delegate,
    Presenter,
    checkout,
    create_order,
    create_shop_order,
    device_back,
    initialize,
    make_order_token,
    set_console,
    set_delegate,
    set_environment_url,
    version,
)
from ._headless import HeadlessPlatform, Load
from ._services import Completion, CoreServices, set_core_services

__all__ = [
    "CheckoutError",
    "Completion",
    "CoreServices",
    "Delegate",
    "HeadlessPlatform",
    "InvalidArgument",
    "LibraryNotFound",
    "Load",
    "Presenter",
    "WrongState",
    "WrongThread",
    "checkout",
    "create_order",
    "create_shop_order",
    "device_back",
    "initialize",
    "make_order_token",
    "set_console",
    "set_core_services",
    "set_delegate",
    "set_environment_url",
    "version",
]
