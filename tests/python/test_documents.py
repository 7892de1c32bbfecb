"""The documents quote the examples as they are."""

import pathlib
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]


class DocumentsTest(unittest.TestCase):
    def test_the_examples_are_quoted_word_for_word(self):
        document = (ROOT / "docs/other-languages.md").read_text()
        for example in ("examples/c/checkout.c", "examples/python/shop.py"):
            with self.subTest(example):
                self.assertIn((ROOT / example).read_text() + "```\n", document)


if __name__ == "__main__":
    unittest.main()
