"""The package on the headless port: whole checkouts, threads, and what a host can do wrong."""

import gc
import json
import subprocess
import sys
import threading
import unittest
from concurrent.futures import ThreadPoolExecutor
from importlib import metadata
from unittest import mock
from urllib.parse import quote

import zorvik_checkout as zorvik

PAGE = "https://pay.example/checkout"
RESPONSE = "https://pay.example/response"
TOKEN = zorvik.make_order_token({"order_id": "order-7", "sub_merchant_id": "sub-3"})


class Services(zorvik.CoreServices):
    """Answers every call from a thread of its own, as a host with a network does."""

    def __init__(self, update=lambda completion: completion.succeed({"orderId": "order-7"})):
        self.update = update
        self.updates = []
        self.events = []
        self.threads = []

    def answer(self, work):
        self.threads.append(threading.Thread(target=work))
        self.threads[-1].start()

    def update_order(self, token, order_id, mode, platform, version, completion):
        self.updates.append((token, order_id, mode, platform, version))
        self.answer(lambda: self.update(completion))

    def list_upi_apps(self, token, completion):
        app = {"upiAppName": "Nilgiri Pay", "packageName": "nilgiri"}
        self.answer(lambda: completion.succeed([app]))

    def enquire_transaction(self, token, order_id, invoice_id, transaction_id, completion):
        enquiry = {"order": {"status": "SUCCESS"}, "transaction_id": transaction_id}
        self.answer(lambda: completion.succeed(enquiry))

    def create_order(self, amount, currency, line_items, user, completion):
        if currency != "INR":
            raise ValueError("one currency only")
        completion.succeed({"orderId": f"{amount} {currency}", "status": line_items[0]["name"]})

    def log_event(self, event):
        self.events.append(event)

    def page_address(self):
        return PAGE

    def response_address(self):
        return RESPONSE

    def is_return_url(self, url):
        return url.startswith("nilgiri-return:")


class CheckoutTest(unittest.TestCase):
    def setUp(self):
        self.platform = zorvik.HeadlessPlatform()
        self.addCleanup(self.platform.close)
        self.platform.on_load(lambda url: zorvik.Load.FINISHES)
        self.platform.on_evaluate(lambda script: None)
        zorvik.set_console(lambda line: None)
        self.addCleanup(zorvik.set_console, None)
        self.use(Services())
        self.addCleanup(zorvik.set_core_services, None)
        self.responses = []
        zorvik.set_delegate(self.responses.append)

    def use(self, services):
        self.services = services
        zorvik.set_core_services(services)

    def settle(self):
        """Until no thread of the services' is left that could answer."""
        self.platform.settle()
        while self.services.threads:
            self.services.threads.pop(0).join()
            self.platform.settle()
        self.platform.advance(1)

    def open_screen(self):
        zorvik.checkout(self.platform.presenter, order_token=TOKEN)
        self.settle()
        self.assertEqual(self.platform.screen_count, 1)

    def reported(self, call):
        """What is reported of exceptions in callbacks during the call."""
        reports = []
        with mock.patch.object(sys, "unraisablehook", lambda args: reports.append(args.exc_value)):
            call()
        return [repr(error) for error in reports]

    def test_a_paid_page_reaches_the_host_as_the_dictionary_it_wrote(self):
        self.open_screen()
        self.assertEqual(len(self.services.updates), 1)
        self.assertEqual(self.services.updates[0][:2], (TOKEN, "order-7"))
        answer = {"payload": {"status": "SUCCESS", "note": "₹ 1,499"}}
        self.platform.page_navigate(f"{RESPONSE}?response={quote(json.dumps(answer))}")
        self.settle()
        self.assertEqual(self.responses, [answer["payload"]])
        self.assertEqual(self.platform.screen_count, 0)
        names = [event["event"] for event in self.services.events]
        self.assertIn("PAYMENT_STATUS", names)
        versions = {event["sdkVersion"] for event in self.services.events}
        self.assertEqual(versions, {zorvik.version()})

    def test_a_upi_payment_goes_out_and_comes_back_with_the_enquiry(self):
        self.platform.install_scheme("upi")
        self.open_screen()
        self.assertIn("Nilgiri Pay", self.platform.page_scripts()[0])
        intent = {"package_name": "nilgiri", "url": "upi://pay?tr=T1", "tr": "T1"}
        self.platform.page_post("openUpiIntent", json.dumps(intent))
        self.settle()
        self.assertEqual(self.platform.opened_urls(), ["upi://pay?tr=T1"])
        self.platform.page_navigate("nilgiri-return://done?status=SUCCESS&tr=T1")
        self.settle()
        self.assertEqual(self.responses, [{"order": {"status": "SUCCESS"}, "transaction_id": "T1"}])

    def start(self, services):
        """A checkout as far as these services let it come; what the host was told went wrong."""
        self.use(services)
        self.responses.clear()
        zorvik.checkout(self.platform.presenter, order_token=TOKEN)
        self.settle()
        return [response["error"] for response in self.responses]

    def test_what_the_services_make_of_an_update_is_what_the_host_hears(self):
        class Raising(Services):
            def update_order(self, *arguments):
                raise KeyError("lost")

        failed = "Failed to update order details: "
        fails = Services(lambda completion: completion.fail("No such order"))
        self.assertEqual(self.start(fails), [failed + "No such order"])
        lets_go = "The core services let go of update_order without an answer"
        self.assertEqual(self.start(Services(lambda completion: None)), [failed + lets_go])
        errors = []
        reports = self.reported(lambda: errors.extend(self.start(Raising())))
        self.assertEqual((reports, errors), (["KeyError('lost')"], [failed + "'lost'"]))

    def test_a_completion_is_answered_once_and_in_kind(self):
        kept = []
        self.start(Services(kept.append))
        with self.assertRaisesRegex(zorvik.InvalidArgument, "update_order"):
            kept[0].succeed(["a list"])
        kept[0].succeed({})
        for answer in (lambda: kept[0].succeed({}), lambda: kept[0].fail("late")):
            with self.assertRaisesRegex(zorvik.WrongState, "answered already"):
                answer()
        self.settle()
        self.assertEqual((self.responses, self.platform.screen_count), ([], 1))

    def test_an_order_is_created_or_refused_by_the_services(self):
        answers = []
        answer = lambda order, error: answers.append((order, str(error)))
        zorvik.create_order(1499.0, "INR", [{"name": "lamp"}], None, answer)
        self.assertEqual(answers, [({"orderId": "1499.0 INR", "status": "lamp"}, "None")])
        reports = self.reported(lambda: zorvik.create_order(1.0, "XXX", [], None, answer))
        self.assertEqual(reports, ["ValueError('one currency only')"])
        self.assertEqual(answers[1:], [(None, "one currency only")])

    def test_what_a_callback_raises_is_reported_and_goes_no_further(self):
        def fail(*_arguments):
            raise RuntimeError("from a callback")

        self.platform.on_load(fail)
        zorvik.set_delegate(fail)
        self.assertEqual(self.reported(self.open_screen), ["RuntimeError('from a callback')"])
        self.platform.page_navigate(f"{RESPONSE}?response=nonsense")
        reports = self.reported(lambda: self.platform.advance(1))
        self.assertEqual(reports, ["RuntimeError('from a callback')"])
        self.assertEqual(self.platform.screen_count, 0)

    def test_results_go_to_the_delegate_of_the_start_while_somebody_keeps_it(self):
        for name, keeps in (("kept", True), ("let go of", False)):
            with self.subTest(name):
                earlier, later = [], []
                delegate = zorvik.set_delegate(earlier.append)
                self.open_screen()
                zorvik.set_delegate(later.append)
                if not keeps:
                    del delegate
                self.platform.page_navigate(f"{RESPONSE}?response=nonsense")
                self.platform.advance(1)
                self.assertEqual((len(earlier), len(later)), (1 if keeps else 0, 0))


class PackageTest(unittest.TestCase):
    def test_an_installed_package_has_the_version_of_its_library(self):
        try:
            version = metadata.version("zorvik-checkout")
        except metadata.PackageNotFoundError:
            self.skipTest("run from the tree")
        self.assertEqual(version, zorvik.version().replace("-alpha.", "a"))


class MisuseTest(unittest.TestCase):
    def test_refused_calls_raise_what_says_why(self):
        with self.assertRaisesRegex(zorvik.WrongState, "there is no platform"):
            zorvik.initialize("shop")
        with zorvik.HeadlessPlatform() as platform:
            with self.assertRaisesRegex(zorvik.WrongState, "a platform already"):
                zorvik.HeadlessPlatform()
            with self.assertRaisesRegex(zorvik.WrongState, "there is no page"):
                platform.page_navigate(PAGE)
            with self.assertRaisesRegex(zorvik.InvalidArgument, "NUL"):
                zorvik.initialize("a\0b")
            with self.assertRaisesRegex(zorvik.InvalidArgument, "order_json"):
                zorvik.create_shop_order({"currency": "INR"}, print)
            with ThreadPoolExecutor() as elsewhere:
                with self.assertRaisesRegex(zorvik.WrongThread, "not the main thread"):
                    elsewhere.submit(zorvik.device_back).result()
        with self.assertRaisesRegex(zorvik.WrongState, "closed"):
            platform.settle()

    def test_a_forgotten_platform_closes_itself_and_its_callbacks_keep_it_not(self):
        platform = zorvik.HeadlessPlatform()
        platform.on_evaluate(lambda script: None)
        with self.assertWarns(ResourceWarning):
            del platform  # by its count of references alone
        platform = zorvik.HeadlessPlatform()
        platform.on_load(lambda url: platform.screen_count)
        with self.assertWarns(ResourceWarning):
            del platform
            gc.collect()
        forgotten = [zorvik.HeadlessPlatform()]
        with self.assertWarns(ResourceWarning):
            with ThreadPoolExecutor() as elsewhere:
                elsewhere.submit(forgotten.clear)
        with zorvik.HeadlessPlatform():
            pass

    def test_an_interpreter_ends_well_with_a_platform_open_and_events_under_way(self):
        program = (
            "import time, zorvik_checkout as z\n"
            "class Services(z.CoreServices):\n"
            "    def log_event(self, event): time.sleep(0.001)\n"
            "platform = z.HeadlessPlatform(background_threads=True)\n"
            "z.set_core_services(Services())\n"
            "for _ in range(20): z.initialize('shop')\n"
        )
        ended = subprocess.run([sys.executable, "-c", program], capture_output=True, text=True)
        self.assertEqual((ended.returncode, ended.stderr), (0, ""))


if __name__ == "__main__":
    unittest.main()
