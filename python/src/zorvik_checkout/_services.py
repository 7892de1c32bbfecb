"""The core services: what talks to the payment back end."""

from __future__ import annotations

import ctypes
import json
from typing import Any

from . import _library
from ._callbacks import destroy, guarded, keep
from ._library import encoded, library

JSONObject = dict[str, Any]


class Completion:
    """An answer that is waited for. Any thread; once. Letting go of it unanswered is a failure."""

    def __init__(self, handle: int) -> None:
        self._handle = handle

    def succeed(self, value: Any) -> None:
        """Answers with a dictionary or list, as the service's method says.

        :raises InvalidArgument: it is none; the completion stays open.
        :raises WrongState: it was answered already.
        """
        library().completion_succeed(self._handle, json.dumps(value).encode())

    def fail(self, message: str) -> None:
        """Answers with a failure in words. :raises WrongState: it was answered already."""
        library().completion_fail(self._handle, encoded(message))

    def __del__(self) -> None:
        library().completion_free(self._handle)


class CoreServices:
    """Subclass this with what your back end can do; what is not overridden fails or says no.

    Methods with a completion are called on the main thread and must not wait: hand the work to a
    thread, which answers when it has heard. An order is a dictionary with "orderId", "orderToken"
    and "status", each of which may be missing. A method that raises has failed.
    """

    def update_order(
        self,
        token: str,
        order_id: str,
        callback_mode: str,
        referrer_platform: str,
        referrer_platform_version: str,
        completion: Completion,
    ) -> None:
        """The order is about to be paid; success: an order."""
        completion.fail("these core services have no update_order")

    def list_upi_apps(self, token: str, completion: Completion) -> None:
        """Success: a list of "upiAppCode", "upiAppName", "packageName", "logoUrl"; may be empty."""
        completion.succeed([])

    def enquire_transaction(
        self,
        token: str,
        order_id: str,
        invoice_id: str,
        transaction_id: str,
        completion: Completion,
    ) -> None:
        """Success: a dictionary, whose "order" has a "status"; it may reach the host as it is."""
        completion.fail("these core services have no enquire_transaction")

    def create_order(
        self,
        amount: float,
        currency: str,
        line_items: list[JSONObject],
        user: JSONObject | None,
        completion: Completion,
    ) -> None:
        """Success: an order."""
        completion.fail("these core services have no create_order")

    def create_shop_order(self, order: JSONObject, completion: Completion) -> None:
        """Success: a dictionary."""
        completion.fail("these core services have no create_shop_order")

    def log_event(self, event: JSONObject) -> None:
        """Any thread, several at once: "event", "orderId", "token", "subMerchantId",
        "additionalData", "sdkVersion" and "appCode"."""

    def page_address(self) -> str:
        """The hosted checkout page."""
        return ""

    def response_address(self) -> str:
        """Where that page goes to hand back a payment response."""
        return ""

    def is_return_url(self, url: str) -> bool:
        """Whether a UPI app hands control back by this address."""
        return False

    def set_environment_url(self, url: str) -> None:
        """The host asked for another back end."""


def _answering(method: Any, *converters: Any) -> Any:
    """The method as C calls it: with its arguments converted, and a completion."""

    def call(*arguments: Any) -> None:
        completion = Completion(arguments[-1])
        try:
            method(*(read(text) for read, text in zip(converters, arguments)), completion)
        except Exception as error:
            try:
                completion.fail(str(error) or type(error).__name__)
            except Exception:
                pass  # answered before it raised
            raise

    return guarded(call)


def _text(text: bytes) -> str:
    return text.decode()


def _value(text: bytes | None) -> Any:
    return None if text is None else json.loads(text)


def _address(method: Any) -> Any:
    return guarded(lambda answer: library().text_set(answer, encoded(method())))


def set_core_services(services: CoreServices | None) -> None:
    """From now on these are asked, and kept; None: nobody, and every checkout fails. Any thread."""
    if services is None:
        library().set_core_services(None)
        return
    struct = _library.CoreServicesStruct()
    struct.size = ctypes.sizeof(struct)
    struct.user_data = keep(struct)  # the struct keeps its callbacks, they keep the services
    struct.destroy = destroy
    functions = {
        "update_order": _answering(services.update_order, *[_text] * 5),
        "list_upi_apps": _answering(services.list_upi_apps, _text),
        "enquire_transaction": _answering(services.enquire_transaction, *[_text] * 4),
        "create_order": _answering(services.create_order, float, _text, _value, _value),
        "create_shop_order": _answering(services.create_shop_order, _value),
        "log_event": guarded(lambda event: services.log_event(json.loads(event))),
        "page_address": _address(services.page_address),
        "response_address": _address(services.response_address),
        "is_return_url": guarded(lambda url: bool(services.is_return_url(url.decode())), False),
        "set_environment_url": guarded(lambda url: services.set_environment_url(url.decode())),
    }
    for name, kind in _library.CoreServicesStruct._fields_[3:]:
        setattr(struct, name, kind(functions[name]))
    library().set_core_services(ctypes.byref(struct))
