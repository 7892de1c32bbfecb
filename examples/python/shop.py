#!/usr/bin/env python3
"""A shop in Python: a GTK 4 window of its own, a button, and a payment.

The checkout page comes from a small server in this process. usage: shop.py [--automatic]
--automatic: presses the buttons by itself and ends after one payment.
"""

import http.server
import sys
import threading

import gi

gi.require_version("Gtk", "4.0")
from gi.repository import Gio, GLib, Gtk

import zorvik_checkout
from zorvik_checkout.gtk import GtkPlatform

PAGE = """<!DOCTYPE html><meta charset="utf-8"><title>Checkout</title><h1>₹ 1,499.00</h1>
<button onclick="pay()">Pay</button>
<script>
function pay() {
  const response = {payload: {status: 'SUCCESS', transactionId: 'T-1'}};
  location.href = '/response?response=' + encodeURIComponent(JSON.stringify(response));
}
AUTOMATIC
</script>"""


class PageServer(http.server.ThreadingHTTPServer):
    """Serves the checkout page on a port of its own, on threads of its own."""

    daemon_threads = True

    def __init__(self, automatic):
        page = PAGE.replace("AUTOMATIC", "pay();" if automatic else "").encode()

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                self.send_response(200)
                self.send_header("Content-Type", "text/html; charset=utf-8")
                self.end_headers()
                self.wfile.write(page)

            def log_message(self, *arguments):
                pass

        super().__init__(("127.0.0.1", 0), Handler)
        threading.Thread(target=self.serve_forever, daemon=True).start()

    def address(self, path):
        return f"http://127.0.0.1:{self.server_port}/{path}"


class Services(zorvik_checkout.CoreServices):
    """A real shop asks its back end here, and answers from the thread that hears of it."""

    def __init__(self, server):
        self.server = server

    def update_order(self, token, order_id, mode, platform, version, completion):
        answer = {"orderId": order_id, "status": "CREATED"}
        threading.Thread(target=completion.succeed, args=(answer,)).start()

    def page_address(self):
        return self.server.address("checkout")

    def response_address(self):
        return self.server.address("response")


class Shop(Gtk.Application):
    def __init__(self, platform, automatic):
        super().__init__(application_id="example.PythonShop", flags=Gio.ApplicationFlags.NON_UNIQUE)
        self.platform = platform
        self.automatic = automatic
        self.result = None

    def do_activate(self):
        self.window = Gtk.ApplicationWindow(application=self, title="Lamps and more")
        self.window.set_default_size(420, 720)
        self.button = Gtk.Button(label="Buy the lamp")
        self.button.connect("clicked", self.buy)
        self.window.set_child(self.button)
        self.window.present()
        if self.automatic:
            GLib.idle_add(self.button.emit, "clicked")

    def buy(self, _button):
        token = zorvik_checkout.make_order_token({"order_id": "order-1"})
        zorvik_checkout.set_delegate(self.paid)
        zorvik_checkout.checkout(self.platform.presenter(self.window), order_token=token)

    def paid(self, result):
        # The whole of it may hold the order token and the customer's data.
        print("received", result.get("error", result.get("status")), flush=True)
        self.result = result
        self.button.set_label("Failed" if "error" in result else "Paid")
        if self.automatic:
            self.quit()


def main():
    automatic = "--automatic" in sys.argv[1:]
    with PageServer(automatic) as server, GtkPlatform("python-shop") as platform:
        zorvik_checkout.set_core_services(Services(server))
        shop = Shop(platform, automatic)
        shop.run()
        server.shutdown()
    return 0 if shop.result == {"status": "SUCCESS", "transactionId": "T-1"} else 1


if __name__ == "__main__":
    sys.exit(main())
