# SPDX-License-Identifier: Apache-2.0
"""Builds the handset's initramfs and its two disks."""

import os
import pathlib
import random
import shutil
import subprocess

HERE = pathlib.Path(__file__).resolve().parent
HOB_SIZE = 0x8000
DHOB_SIZE = 0x20000
UNWRITTEN = b"\xee"  # the initial content of the partition
DATA_MEGABYTES = 64
CALLS_MEGABYTES = 512
POLICY = HERE.parents[1] / "platform/android/seccomp/qorext_client.policy"


def hob_content():
    """The content of the modem's shared memory, the same in every run."""
    return random.Random(0).randbytes(HOB_SIZE)


def needed_libraries(path):
    result = subprocess.run(["aarch64-linux-gnu-readelf", "-d", path], capture_output=True,
                            text=True, check=True)
    return [line.split("[")[1].split("]")[0] for line in result.stdout.splitlines()
            if "(NEEDED)" in line]


class Image:
    programs = ("bin/busybox", "usr/sbin/chroot", "usr/bin/strace", "usr/bin/qmicli",
                "usr/bin/qrtr-lookup")
    tests = ("qmi_transport_test", "qmi_client_test", "e2e_test")
    guest = {"guest/base": "base",
             "guest/init": "init",
             "guest/qorext_client": "system/bin/qorext_client",
             "guest/traced": "system/traced/qorext_client"}
    needed_modules = ("virtio_mmio", "virtio_blk", "crc32c_generic", "ext4", "qrtr", "brd")

    def __init__(self, build, parts, root="root"):
        self.build = build            # the arm64 build
        self.sysroot = parts / "sysroot"
        self.modules = next((parts / "kernel/lib/modules").iterdir())
        self.root = parts / root      # the content of the initramfs
        self.folders = [build / "lib", build / "lib/tests", self.sysroot / "lib/aarch64-linux-gnu",
                        self.sysroot / "usr/lib/aarch64-linux-gnu",
                        self.sysroot / "usr/lib/aarch64-linux-gnu/android"]

    def make(self, initramfs):
        shutil.rmtree(self.root, ignore_errors=True)
        for name in ("proc", "sys", "dev", "tmp", "run", "usr/share/handset"):
            (self.root / name).mkdir(parents=True)
        self.add_programs()
        self.add_modules()
        self.add_settings()
        names = subprocess.run(["find", "."], cwd=self.root, capture_output=True, check=True)
        with open(initramfs, "wb") as archive:
            subprocess.run(["cpio", "--create", "--quiet", "--format=newc", "--owner=+0:+0"],
                           cwd=self.root, input=names.stdout, stdout=archive, check=True)

    def add_programs(self):
        for name in self.programs:
            self.add(self.sysroot / name, name)
        for name in ("qorext_modem", "qorextctl"):
            self.add(self.build / "bin" / name, f"system/bin/{name}")
        self.add(self.build / "bin/qorext_client", "phone/system/bin/qorext_client")
        self.add(self.build / "bin/confine", "phone/system/bin/confine")
        self.copy(POLICY, "phone/vendor/etc/seccomp_policy/qorext_client.policy")
        for name in self.tests:
            self.add(self.build / "tests" / name, f"system/bin/{name}")
        for source, name in self.guest.items():
            self.copy(HERE / source, name)
        self.copy(self.sysroot / "lib/ld-linux-aarch64.so.1", "lib/ld-linux-aarch64.so.1")

    def add(self, source, name):
        """Adds an executable or a library, and the libraries it needs."""
        self.copy(source, name)
        for library in needed_libraries(source):
            place = f"usr/lib/aarch64-linux-gnu/{library}"
            if library.startswith("ld-linux") or (self.root / place).exists():
                continue
            self.add(self.find(library), place)

    def find(self, library):
        for folder in self.folders:
            if (folder / library).exists():
                return folder / library
        raise FileNotFoundError(library)

    def copy(self, source, name):
        target = self.root / name
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(source, target)

    def add_modules(self):
        target = f"lib/modules/{self.modules.name}"
        known = {}
        for line in (self.modules / "modules.dep").read_text().splitlines():
            path, dependencies = line.split(":")
            known[pathlib.Path(path).stem.replace("-", "_")] = [path, *dependencies.split()]
        for path in {path for module in self.needed_modules for path in known[module]}:
            self.copy(self.modules / path, f"{target}/{path}")
        for name in ("modules.order", "modules.builtin", "modules.builtin.modinfo"):
            self.copy(self.modules / name, f"{target}/{name}")
        subprocess.run(["depmod", "-b", self.root, self.modules.name], check=True)

    def add_settings(self):
        share = self.root / "usr/share/handset"
        self.copy(HERE.parents[1] / "tools/demo.session", "usr/share/handset/demo.session")
        share.joinpath("hob").write_bytes(hob_content())


def make_empty(disk, megabytes):
    with open(disk, "wb") as file:
        file.truncate(megabytes << 20)


def make_disks(data, dhob):
    make_empty(data, DATA_MEGABYTES)
    subprocess.run(["mke2fs", "-q", "-F", "-t", "ext4", data], check=True)
    dhob.write_bytes(UNWRITTEN * DHOB_SIZE)


def is_saved(dhob):
    """Returns whether the partition holds the shared memory and is otherwise unchanged."""
    return dhob.read_bytes() == hob_content() + UNWRITTEN * (DHOB_SIZE - HOB_SIZE)
