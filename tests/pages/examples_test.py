# SPDX-License-Identifier: Apache-2.0
"""The examples of the pages print what the pages show. QOREXT_BIN is the folder of the programs."""
import os
import pathlib
import re
import socket
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
BIN = os.environ['QOREXT_BIN']
# Commands of the pages that need nothing but the programs and the repository.
RUNNABLE = re.compile(r'qorextctl request|qorextctl replay tests/|printf .*\| qorextctl record')
SECONDS = 60


def blocks(page):
    return re.findall(r'^```\n(.*?)^```', (ROOT / page).read_text(), re.MULTILINE | re.DOTALL)


def pattern(shown):
    """Matches what is shown: `...` for any text, and any number of recorded events."""
    text = re.escape('\n'.join(shown)).replace(r'\.\.\.', r'[\s\S]*')
    return re.sub(r'\d+\\ events', r'\\d+ events', text)


def options_in(text):
    return set(re.findall(r'--[a-z][a-z-]+', text))


class Examples(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        (self.folder / 'tests').symlink_to(ROOT / 'tests')

    def run_line(self, line, text=''):
        environment = {**os.environ, 'PATH': f'{BIN}:{os.environ["PATH"]}'}
        return subprocess.run(line, shell=True, cwd=self.folder, env=environment, input=text,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                              timeout=SECONDS, check=False).stdout

    def test_the_session_of_the_readme_prints_what_is_shown(self):
        (session,) = (block for block in blocks('README.md') if block.startswith('> '))
        lines = session.splitlines()
        output = self.run_line('qorextctl session',
                               ''.join(line[2:] + '\n' for line in lines if line.startswith('> ')))
        shown = [line for line in lines if not line.startswith('> ')]
        self.assertRegex(output, '^' + pattern(shown))

    def test_the_commands_of_the_tools_page_print_what_is_shown(self):
        count = 0
        for block in blocks('docs/qorextctl.md'):
            for line, shown in re.findall(r'^\$ (.*)\n((?:(?!\$ ).*\n)*)', block, re.MULTILINE):
                if RUNNABLE.match(line):
                    self.assertRegex(self.run_line(line), '^' + pattern(shown.splitlines()), line)
                    count += 1
        self.assertEqual(count, 3)

    def test_the_tools_page_names_the_options_of_the_help(self):
        help_texts = [self.run_line('qorextctl --help')]
        commands = re.findall(r'^  ([a-z]+) ', help_texts[0].split('\nSubcommands:\n')[1]
                              .split('\n\n')[0], re.MULTILINE)
        self.assertIn('record', commands)
        help_texts += [self.run_line(f'qorextctl {command} --help') for command in commands]
        known = {option for text in help_texts for option in options_in(text.split('examples:')[0])}
        page = (ROOT / 'docs/qorextctl.md').read_text()
        self.assertEqual(known - options_in(page), set())
        self.assertEqual(options_in(page) - known, {'--listen'})  # of the modem

    def test_the_control_socket_answers_as_shown(self):
        answers = self.ask([line for block in blocks('docs/modem-control.md')
                            for line in block.splitlines()])
        self.assertGreater(len(answers), 15)
        for command, shown, answer in answers:
            self.assertRegex(answer, f'^{pattern([shown])}$', command)

    def ask(self, lines):
        """Each command with the answer that is shown in the line after it, and the modem's."""
        control = str(self.folder / 'control')
        read, write = os.pipe()
        modem = subprocess.Popen([f'{BIN}/qorext_modem', '--listen', f'unix:{self.folder}/modem',
                                  '--control', control, '--ready-fd', str(write)],
                                 pass_fds=[write])
        self.addCleanup(modem.wait)
        self.addCleanup(modem.terminate)
        os.close(write)
        os.read(read, 1)
        os.close(read)
        with socket.socket(socket.AF_UNIX) as client:
            client.settimeout(SECONDS)
            client.connect(control)
            with client.makefile('rw') as stream:
                return [(command, shown, self.answer(stream, command))
                        for command, shown in zip(lines, lines[1:])
                        if command.startswith('{"command"')]

    def answer(self, stream, command):
        stream.write(command + '\n')
        stream.flush()
        return stream.readline().rstrip('\n')


if __name__ == '__main__':
    unittest.main()
