# SPDX-License-Identifier: Apache-2.0
"""The daemon under the example of a parent: requests, indications, a crash, the end."""
import os
import pathlib
import re
import signal
import subprocess
import tempfile
import unittest

BUILD = pathlib.Path(os.environ['QOREXT_BUILD'])
TIMEOUT_S = 60
# The header of a CDMA-hook request, little-endian: u32 id, length and status, 6 bytes of code.
GET_BC10 = 'b0000002' + '00000000' + '00000000' + '00' * 6


def tool(*words):
    done = subprocess.run([BUILD / 'bin/qorextctl', *words], check=False, capture_output=True,
                          text=True, timeout=TIMEOUT_S)
    return done.stdout


class ExampleParent(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.modem = f'unix:{folder.name}/modem'
        self.control = f'{folder.name}/control'
        os.chmod(folder.name, 0o755)
        environment = dict(os.environ, QOREXT_MODEM=self.modem, QOREXT_PHONE_ROOT=folder.name)
        modem = self.start([BUILD / 'bin/qorext_modem', '--listen', self.modem, '--control',
                            self.control, '--ready-fd', '1'], environment)
        modem.stdout.read(1)
        os.chmod(f'{folder.name}/modem', 0o777)
        self.parent = self.start([BUILD / 'tests/qorext_parent', BUILD / 'bin/qorext_client', '0'],
                                 environment)

    def start(self, words, environment):
        process = subprocess.Popen(words, env=environment, stdin=subprocess.PIPE,
                                   stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        self.addCleanup(process.stdin.close)
        return process

    def next_line(self, beginning):
        for line in self.parent.stdout:
            if line.startswith(beginning):
                return line.strip()
        self.fail(f'the parent has ended without "{beginning}"')

    def request(self, hex_text):
        self.parent.stdin.write(hex_text + '\n')
        self.parent.stdin.flush()

    def test_a_request_gets_its_reply(self):
        self.request(GET_BC10)
        self.assertRegex(self.next_line('reply'), '^reply b0000002' '04000000' '00000000')

    def test_an_indication_arrives(self):
        self.request(GET_BC10)
        self.next_line('reply')
        tool('--control', self.control, 'modem', 'indicate', 'generic')
        self.assertIn('00020006', self.next_line('unsolicited'))

    def test_a_crashed_daemon_is_started_again_after_a_delay(self):
        first = int(self.next_line('started').split()[1])
        os.kill(first, signal.SIGKILL)
        self.assertEqual(self.next_line('exited'), 'exited with status 0x9, next start in 100 ms')
        second = int(self.next_line('started').split()[1])
        self.assertNotEqual(first, second)
        self.request(GET_BC10)
        self.next_line('reply')

    def test_the_daemon_ends_with_its_parent_s_input(self):
        daemon = int(self.next_line('started').split()[1])
        self.request(GET_BC10)
        self.next_line('reply')
        self.parent.stdin.close()
        self.assertEqual(self.parent.wait(TIMEOUT_S), 0)
        self.assertFalse(pathlib.Path(f'/proc/{daemon}').exists())


if __name__ == '__main__':
    unittest.main()
