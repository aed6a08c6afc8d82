# SPDX-License-Identifier: Apache-2.0
"""The texts by which the tool knows the daemon's log lines are those that the daemon writes."""
import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
READER = ROOT / 'tools/qorextctl/log/log_reader.cpp'
LITERAL = r'"((?:[^"\\\n]|\\.)*)"'
CONVERSION = re.compile(r'(%[-0-9.]*l*[a-zA-Z])')


def literals(text):
    """String literals, adjacent ones joined."""
    text = re.sub(r'^\s*//.*$', '', text, flags=re.MULTILINE)
    return [''.join(re.findall(LITERAL, found[0]))
            for found in re.finditer(LITERAL + r'(?:\s*' + LITERAL + ')*', text)]


def begins(form, text):
    """Whether a line of this printf form can begin with the text."""
    expression, closing = '', ''
    for part in CONVERSION.split(form):
        for unit in [part] if CONVERSION.fullmatch(part) else part:
            unit = re.escape(unit) if unit != part or len(part) == 1 else '.+?'
            expression, closing = expression + f'(?:{unit}', closing + '|$)'
    return re.match(expression + closing + '$', text) is not None


def written():
    """The daemon's literals, and those that it prints the title of a dump before."""
    texts = [text for file in sorted((ROOT / 'src').rglob('*.cpp'))
             for text in literals(file.read_text())]
    titles = [text for text in texts if text.endswith('()')]
    dumps = [text for text in texts if text.startswith('%s ')]
    plain = [text for text in texts if text[:1] not in ('', '%')]
    return plain + [title + dump.removeprefix('%s') for title in titles for dump in dumps]


def recognized():
    """The first texts of the reader's rows, and its named texts."""
    text = READER.read_text()
    rows = re.findall(r'^ {4}\{?' + LITERAL, text, re.MULTILINE)
    return rows + re.findall(r'string_view k\w+Text = ' + LITERAL, text)


def unknown(texts):
    forms = written()
    return [text for text in texts if not any(begins(form, text) for form in forms)]


class LogTexts(unittest.TestCase):
    def test_the_tool_recognizes_lines_that_the_daemon_writes(self):
        texts = recognized()
        self.assertGreater(len(texts), 30)
        self.assertEqual(unknown(texts), [])

    def test_a_text_that_the_daemon_does_not_write_is_noticed(self):
        self.assertEqual(unknown(['isSpcChanged = 0, (', 'isSpcChanged : ']), ['isSpcChanged : '])


if __name__ == '__main__':
    unittest.main()
