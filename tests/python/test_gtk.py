"""The package on the GTK port, for a host without a main loop or a window of its own."""

import os
import subprocess
import sys
import tempfile
import unittest
from unittest import mock

import gi

gi.require_version("Gtk", "4.0")
from gi.repository import GLib, Gtk

import zorvik_checkout as zorvik
from zorvik_checkout.gtk import GtkPlatform


class GtkTest(unittest.TestCase):
    def setUp(self):
        zorvik.set_console(lambda line: None)
        self.addCleanup(zorvik.set_console, None)
        self.platform = GtkPlatform("python-test", spare_page=False)
        self.addCleanup(self.platform.close)

    def test_a_window_is_opened_waited_for_and_saved_as_a_picture(self):
        window = self.platform.open_window("Shop", 300, 200)
        with tempfile.TemporaryDirectory() as folder:
            picture = os.path.join(folder, "shop.png")
            saved = lambda: self.platform.save_png(window, picture)
            self.assertTrue(self.platform.run_until(saved, 10))
            self.assertGreater(os.path.getsize(picture), 100)
            self.assertFalse(self.platform.save_png(window, folder))
        self.assertFalse(self.platform.run_until(lambda: False, 0.01))
        reports = []
        with mock.patch.object(sys, "unraisablehook", lambda args: reports.append(args.exc_value)):
            self.assertFalse(self.platform.run_until(lambda: 1 // 0, 0.01))
        self.assertIsInstance(reports[0], ZeroDivisionError)
        self.platform.close_window(window)

    def test_run_ends_by_quit_and_the_platform_is_not_closed_inside_it(self):
        refusals = []

        def close_and_quit():
            try:
                self.platform.close()
            except zorvik.WrongState as error:
                refusals.append(str(error))
            self.platform.quit()

        GLib.idle_add(close_and_quit)
        self.platform.run()
        self.assertEqual(refusals, ["the main loop is being run"])

    def test_a_presenter_is_made_for_a_living_window_only(self):
        window = Gtk.Window()
        self.platform.presenter(window)
        with self.assertRaises(TypeError):
            self.platform.presenter("window")
        with self.assertRaisesRegex(zorvik.InvalidArgument, "not a GtkWindow"):
            self.platform.presenter(Gtk.Label())
        window.destroy()
        with self.assertRaisesRegex(zorvik.WrongState, "destroyed"):
            self.platform.presenter(window)

    def test_a_second_platform_and_a_bad_name_are_refused(self):
        with self.assertRaisesRegex(zorvik.WrongState, "a platform already"):
            GtkPlatform("second")
        self.platform.close()
        with self.assertRaisesRegex(zorvik.CheckoutError, "name a folder"):
            GtkPlatform("a/b")


class LibraryTest(unittest.TestCase):
    def test_the_gtk_module_is_refused_once_the_other_library_is_in_use(self):
        program = "import zorvik_checkout as z; z.version(); import zorvik_checkout.gtk"
        ended = subprocess.run([sys.executable, "-c", program], capture_output=True, text=True)
        self.assertIn("import zorvik_checkout.gtk before the first call", ended.stderr)

    def test_a_library_that_is_not_there_is_told_with_the_remedy(self):
        environment = {**os.environ, "ZORVIK_CHECKOUT_LIBRARY": "/nowhere"}
        program = "import zorvik_checkout as z; z.version()"
        ended = subprocess.run(
            [sys.executable, "-c", program], capture_output=True, text=True, env=environment
        )
        self.assertIn("LibraryNotFound", ended.stderr)
        self.assertIn("set ZORVIK_CHECKOUT_LIBRARY to the folder", ended.stderr)


if __name__ == "__main__":
    unittest.main()
