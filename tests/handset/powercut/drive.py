# SPDX-License-Identifier: Apache-2.0
"""A drive with a volatile cache: an NBD (network block device) server for one machine.

Data is on the medium only after a flush. When the power fails, any subset of the blocks in the cache
has reached the medium.
"""

import contextlib
import socket
import struct
import tempfile
import threading

BLOCK = 4096  # the unit that reaches the medium

HANDSHAKE = struct.Struct(">8s8sH")
OPTION = struct.Struct(">8sII")
OPTION_REPLY = struct.Struct(">QIII")
EXPORT = struct.Struct(">HQH")
REQUEST = struct.Struct(">IHHQQI")
REPLY = struct.Struct(">IIQ")

FIXED_NEWSTYLE, NO_ZEROES = 1, 2
OPTION_REPLY_MAGIC = 0x3E889045565A9
OPTION_ABORT, OPTION_INFO, OPTION_GO = 2, 6, 7
ACK, INFO, UNSUPPORTED = 1, 3, 0x80000001
INFO_EXPORT = 0
HAS_FLAGS, HAS_FLUSH = 1, 4
REQUEST_MAGIC, REPLY_MAGIC = 0x25609513, 0x67446698
READ, WRITE, DISCONNECT, FLUSH = range(4)
INVALID = 22  # EINVAL


class Disconnected(Exception):
    """The machine has disconnected."""


class Drive:
    def __init__(self, image):
        """`image` is the initial content of the medium."""
        self.medium = bytearray(image)
        self.content = bytearray(image)  # as the machine sees it
        self.cache = []                  # (offset, bytes) not yet on the medium
        self.lock = threading.Lock()
        self.left = None                 # writes and flushes until the power fails
        self.folder = tempfile.TemporaryDirectory()
        self.path = f"{self.folder.name}/drive"  # of the socket that the machine connects to
        self.listener = socket.socket(socket.AF_UNIX)
        self.listener.bind(self.path)
        self.listener.listen(1)
        self.thread = threading.Thread(target=self.serve, daemon=True)
        self.thread.start()

    def backing(self):
        """The options of QEMU's -drive. Only the machine's flushes reach the drive."""
        return (f"format=raw,cache=writeback,file.driver=nbd,file.server.type=unix,"
                f"file.server.path={self.path}")

    def fail_after(self, commands, act):
        """After `commands` writes and flushes the drive stops answering and calls `act` once."""
        with self.lock:
            self.left, self.act = commands, act

    def settle(self, rng):
        """Call after the power has failed. Writes none, all or half of the cache to the medium.

        Returns the numbers of blocks in the cache and of blocks written.
        """
        share = rng.choice((0, 0.5, 1))
        blocks = [(offset + at, data[at:at + BLOCK])
                  for offset, data in self.cache for at in range(0, len(data), BLOCK)]
        kept = [block for block in blocks if rng.random() < share]
        for offset, data in kept:
            self.medium[offset:offset + len(data)] = data
        return len(blocks), len(kept)

    def close(self):
        """Ends the server. The connected machine must be off."""
        with contextlib.suppress(OSError):
            self.listener.shutdown(socket.SHUT_RDWR)
        self.listener.close()
        self.thread.join()
        self.folder.cleanup()

    def serve(self):
        try:
            self.peer, _ = self.listener.accept()
            with self.peer:
                self.shake_hands()
                while True:
                    self.answer_request()
        except (Disconnected, OSError):
            pass

    def receive(self, size):
        data = bytearray()
        while len(data) < size:
            piece = self.peer.recv(size - len(data))
            if not piece:
                raise Disconnected
            data += piece
        return bytes(data)

    def shake_hands(self):
        self.peer.sendall(HANDSHAKE.pack(b"NBDMAGIC", b"IHAVEOPT", FIXED_NEWSTYLE | NO_ZEROES))
        self.receive(4)
        while True:
            _, option, size = OPTION.unpack(self.receive(OPTION.size))
            self.receive(size)
            if option in (OPTION_GO, OPTION_INFO):
                export = EXPORT.pack(INFO_EXPORT, len(self.content), HAS_FLAGS | HAS_FLUSH)
                self.reply_option(option, INFO, export)
            is_known = option in (OPTION_GO, OPTION_INFO, OPTION_ABORT)
            self.reply_option(option, ACK if is_known else UNSUPPORTED)
            if option == OPTION_GO:
                return

    def reply_option(self, option, kind, data=b""):
        self.peer.sendall(OPTION_REPLY.pack(OPTION_REPLY_MAGIC, option, kind, len(data)) + data)

    def answer_request(self):
        magic, _, kind, handle, offset, size = REQUEST.unpack(self.receive(REQUEST.size))
        if magic != REQUEST_MAGIC or kind == DISCONNECT:
            raise Disconnected
        data = self.receive(size) if kind == WRITE else b""
        answer = self.read(offset, size) if kind == READ else b""
        if kind in (WRITE, FLUSH):
            self.change(kind, offset, data)
        error = 0 if kind in (READ, WRITE, FLUSH) else INVALID
        self.peer.sendall(REPLY.pack(REPLY_MAGIC, error, handle) + answer)

    def read(self, offset, size):
        return bytes(self.content[offset:offset + size])

    def change(self, kind, offset, data):
        if kind == WRITE:
            self.content[offset:offset + len(data)] = data
            self.cache.append((offset, data))
        else:
            for place, piece in self.cache:
                self.medium[place:place + len(piece)] = piece
            self.cache.clear()
        self.count_down()

    def count_down(self):
        with self.lock:
            if self.left is None:
                return
            self.left -= 1
            if self.left > 0:
                return
        self.act()
        while self.peer.recv(1 << 16):  # Later requests get no answer.
            pass
        raise Disconnected
