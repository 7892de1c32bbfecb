"""The checkout itself."""

from __future__ import annotations

import ctypes
import json
import weakref
from typing import Any, Callable, Optional, Sequence

from ._callbacks import registered
from ._errors import CheckoutError
from ._library import (
    AnswerFunction,
    CheckoutOptionsStruct,
    Destroy,
    TextFunction,
    encoded,
    library,
    taken,
)

JSONObject = dict[str, Any]
Response = Callable[[JSONObject], None]
Answer = Callable[[Optional[JSONObject], Optional[CheckoutError]], None]


class Presenter:
    """Where checkouts are shown; made by a platform."""

    def __init__(self, handle: int) -> None:
        self._handle = handle

    def __del__(self) -> None:
        library().presenter_free(self._handle)


class Delegate:
    """A receiver of results. Letting go of it ends it."""

    def __init__(self, response: Response) -> None:
        self._response = response
        weak = weakref.ref(self)

        def respond(text: bytes) -> None:
            delegate = weak()
            if delegate is not None:
                delegate._response(json.loads(text))

        self._handle = library().delegate_make(*registered(TextFunction, respond))

    def __del__(self) -> None:
        if hasattr(self, "_handle"):
            library().delegate_free(self._handle)


_current_delegate: Delegate | None = None


def set_delegate(response: Response | None) -> Delegate | None:
    """Results go to this function from now on, on the main thread; None: to nobody.

    It is kept until another one is set. A checkout's result goes to the function that was set when
    the checkout started: keep the returned object to receive it after another one was set.
    """
    global _current_delegate
    delegate = None if response is None else Delegate(response)
    library().set_delegate(None if delegate is None else delegate._handle)
    _current_delegate = delegate
    return delegate


def version() -> str:
    """The component's version. Any thread."""
    return bytes(library().version()).decode()


def initialize(app_code: str | None) -> None:
    """Names the host's application in later events; None and "" keep an earlier code."""
    library().initialize(encoded(app_code))


def set_environment_url(url: str | None) -> None:
    """The back end's base address; None and "" change nothing."""
    library().set_environment_url(encoded(url))


def checkout(
    presenter: Presenter,
    *,
    order_token: str | None,
    wallet_code: str | None = None,
    payment_flow: str | None = None,
    payment_mode_code: str | None = None,
    bank_code: str | None = None,
) -> None:
    """Takes the payment of an order; returns at once. Without a token only an event comes of it."""
    options = CheckoutOptionsStruct(
        encoded(order_token),
        encoded(wallet_code),
        encoded(payment_flow),
        encoded(payment_mode_code),
        encoded(bank_code),
    )
    library().checkout(presenter._handle, ctypes.byref(options))


def device_back() -> None:
    """Tells the open checkout screen, if any, of a back action of the host's."""
    library().device_back()


def _answer(answer: Answer) -> Any:
    def call(value: bytes | None, error: bytes | None) -> None:
        if error is None:
            answer(json.loads(value or b"null"), None)
        else:
            answer(None, CheckoutError(error.decode()))

    return registered(AnswerFunction, call)


def create_order(
    amount: float,
    currency: str,
    line_items: Sequence[JSONObject],
    user: JSONObject | None,
    answer: Answer,
) -> None:
    """Creates an order by the core services. `answer` is called once, on their thread, with the
    order or with an error."""
    library().create_order(
        amount,
        encoded(currency),
        json.dumps(list(line_items)).encode(),
        None if user is None else json.dumps(user).encode(),
        *_answer(answer),
    )


def create_shop_order(order: JSONObject, answer: Answer) -> None:
    """The same with one dictionary: the strings "currency", "amount", "productId",
    "checkoutExperience", "paymentMode", "subPaymentMode", the boolean "orderLineItems", the
    dictionary "user" or none."""
    library().create_shop_order(json.dumps(order).encode(), *_answer(answer))


def make_order_token(claims: JSONObject) -> str:
    """An order token that carries these claims and proves nothing: for tests and examples. Any
    thread."""
    return taken(library().make_order_token(json.dumps(claims).encode()))


def set_console(line: Callable[[str], None] | None) -> None:
    """Sends the component's console lines to a function, on any thread; None: to standard output.
    Any thread."""
    if line is None:
        library().set_console(TextFunction(), None, Destroy())
    else:
        library().set_console(*registered(TextFunction, lambda text: line(text.decode())))
