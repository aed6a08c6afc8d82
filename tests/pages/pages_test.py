# SPDX-License-Identifier: Apache-2.0
"""Links, files and fixed texts that the pages name exist."""
import fnmatch
import json
import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGES = [*sorted(ROOT.glob('*.md')), *sorted((ROOT / 'docs').glob('*.md'))]
GLOSSARY = ROOT / 'docs/glossary.md'
FIXED_TEXTS = ('Misspellings', 'Names of other things', 'Spacing, case and missing values')


def anchors(page):
    """The fragments by which the page's headings are linked."""
    headings = re.findall(r'^#+ (.+)$', page.read_text(), re.MULTILINE)
    return {re.sub(r'[^\w\- ]', '', heading.lower()).replace(' ', '-') for heading in headings}


def dead_links(page, text):
    dead = []
    for link in re.findall(r'\]\(([^)\s]+)\)', text):
        path, _, anchor = link.partition('#')
        target = (page.parent / path) if path else page
        if not re.match(r'https?://', link) and (
                not target.exists() or (anchor and anchor not in anchors(target))):
            dead.append(link)
    return dead


def repository_files():
    """Paths of all files and folders, without builds and hidden folders."""
    tops = [top for top in ROOT.iterdir() if top.name != 'build' and not top.name.startswith('.')]
    found = [path for top in tops for path in (top, *top.rglob('*'))]
    return ['/' + str(path.relative_to(ROOT)) for path in found]


def unknown_paths(text, files):
    """Names of sources and scripts in the text that are the end of no path in the repository."""
    names = re.findall(r'`([\w./*-]+\.(?:cpp|h|py|bash|session|toml))`', text)
    folders = re.findall(r'`((?:bench|docs|fuzz|modem|platform|protocol|src|tests|tools)/[\w./*-]+)`',
                         text)
    return sorted({name for name in names + folders
                   if not fnmatch.filter(files, '*/' + name.rstrip('/'))})


def fixed_texts(glossary):
    """The first column of the tables of fixed texts."""
    for title in FIXED_TEXTS:
        section = glossary.split(f'\n### {title}\n')[1].split('\n#')[0]
        yield from re.findall(r'^\| `([^`]+)` \|', section, re.MULTILINE)


def sources():
    """The sources of the product, with texts over several lines in one piece."""
    files = sorted((ROOT / 'src').rglob('*.[ch]*'))
    return re.sub(r'"\s*\n\s*"', '', '\n'.join(file.read_text() for file in files))


class Pages(unittest.TestCase):
    def test_every_link_leads_to_a_file_and_a_heading(self):
        for page in PAGES:
            self.assertEqual(dead_links(page, page.read_text()), [], page)

    def test_a_dead_link_is_noticed(self):
        text = '[a](#terms) [b](#no-heading) [c](no-page.md) [d](README.md)'
        self.assertEqual(dead_links(GLOSSARY, text), ['#no-heading', 'no-page.md', 'README.md'])

    def test_every_named_file_exists(self):
        files = repository_files()
        for page in PAGES:
            self.assertEqual(unknown_paths(page.read_text(), files), [], page)

    def test_a_renamed_file_is_noticed(self):
        text = '`src/host/main.cpp` `main.cpp` `host/*.cpp` `src/main` `no_main.cpp`'
        files = ['/src', '/src/host', '/src/host/main.cpp']
        self.assertEqual(unknown_paths(text, files), ['no_main.cpp', 'src/main'])

    def test_every_fixed_text_of_the_glossary_occurs_in_the_sources(self):
        texts = list(fixed_texts(GLOSSARY.read_text()))
        self.assertGreater(len(texts), 30)
        code = sources()
        self.assertEqual([text for text in texts if text not in code], [])

    def test_a_corrected_text_is_noticed(self):
        corrected = sources().replace('pckage', 'package')
        missing = [text for text in fixed_texts(GLOSSARY.read_text()) if text not in corrected]
        self.assertEqual(len(missing), 2)

    def test_every_key_of_the_scenarios_page_is_a_key_of_the_modem(self):
        keys = (ROOT / 'docs/scenario-keys.md').read_text()
        page = (ROOT / 'docs/scenarios.md').read_text()
        first_columns = re.findall(r'^\| (`[a-z].*?) \|', page, re.MULTILINE)
        named = re.findall(r'`([a-z][a-z0-9_.]*)`', ' '.join(first_columns))
        named = [name for name in named if not name.endswith('.toml')]
        self.assertGreater(len(named), 40)
        self.assertEqual([name for name in named if not re.search(rf'[.`]{name}`', keys)], [])

    def test_the_instructions_of_a_request_are_those_that_the_benchmark_compares(self):
        stored = json.loads((ROOT / 'bench/instructions.json').read_text())
        row = re.search(r'^\| instructions of the code built here \| (.*?) \| \|$',
                        (ROOT / 'docs/performance.md').read_text(), re.MULTILINE)[1]
        self.assertEqual([f'{count:,}' for count in stored.values()], row.split(' | '))


if __name__ == '__main__':
    unittest.main()
