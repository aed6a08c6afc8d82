# SPDX-License-Identifier: Apache-2.0
"""The permissions that the recorded system calls of the daemon need on a phone."""
import collections
import re

from support import ROOT

RECORD = ROOT / 'tests/handset/recorded_calls'

# How an object of the record is labelled on a phone.
FILES = {
    r'/proc/bootinfo': ('proc_bootinfo', 'file'),
    r'/sys/module/.*': ('sysfs_modem_restarts', 'file'),
    r'/dev/qor_hob_ram': ('qor_hob_ram_device', 'chr_file'),
    r'/dev/block/bootdevice/by-name/dhob': ('dhob_block_device', 'blk_file'),
    r'/data/vorn': ('vorn_vendor_data_file', 'dir'),
    r'/data/vorn/\.(NNNN|new)': ('vorn_vendor_data_file', 'lnk_file'),
    r'/data/vorn/[~A-Za-z_.]+': ('vorn_vendor_data_file', 'file'),
    r'QRTR': ('qorext_client', 'qipcrtr_socket'),
    r'PIPE': ('rild', 'fifo_file'),
}
# What the path of an object adds to each look-up.
FOLDERS = {
    '/data/vorn': {('system_data_file', 'lnk_file'): {'read'},
                   ('vendor_data_file', 'dir'): {'search'}},
    '/data/vorn/': {('vorn_vendor_data_file', 'dir'): {'search'}},
    '/dev/block/': {('block_device', 'dir'): {'search'}},
}
# What a property needs: the handset has a file for each, a phone has the property service and areas
# that are mapped.
READ_PROPERTY = {'getattr', 'map', 'open', 'read'}
PROPERTIES = {
    r'/dev/__properties__/ro\.baseband': {('bootloader_prop', 'file'): READ_PROPERTY},
    r'/dev/__properties__/ro\.radio\.imei\.sv': {('telephony_config_prop', 'file'): READ_PROPERTY},
    r'/dev/__properties__/ril\..*': {
        ('init', 'unix_stream_socket'): {'connectto'}, ('property_socket', 'sock_file'): {'write'},
        ('qorext_prop', 'property_service'): {'set'}},
}
# The same for every program of a vendor: granted to each domain, or parts of the handset only.
NAMED = {'QRTR', 'PIPE', 'LOG', 'LIBRARY', 'LIBRARY_FOLDER', 'LIBRARY_CACHE', 'EVENTS'}
COMMON = re.compile(r'LIBRARY\w*|LOG|EVENTS|/dev/__properties__(/TEMPORARY)?|/data/system.*|'
                    r'/etc/localtime|/dev/full|/proc/self/exe|/proc/sys/vm/overcommit_memory')
# Calls on an object that need no permission of their own.
FREE = set('close fcntl fsync fdatasync lseek ppoll pselect6 faccessat mkdirat munmap'.split())
PERMISSIONS = {
    'bind': 'bind', 'connect': 'connect', 'getsockname': 'getattr', 'getpeername': 'getattr',
    'getsockopt': 'getopt', 'setsockopt': 'setopt', 'socket': 'create', 'recvfrom': 'read',
    'recvmsg': 'read', 'sendto': 'write', 'sendmsg': 'write', 'shutdown': 'shutdown',
    'ioctl': 'ioctl', 'flock': 'lock', 'read': 'read', 'readv': 'read', 'pread64': 'read',
    'getdents64': 'read', 'readlinkat': 'read', 'newfstatat': 'getattr', 'fstat': 'getattr',
    'fchmodat': 'setattr', 'fchownat': 'setattr', 'ftruncate': 'write',
}
PATH_CALLS = set('openat newfstatat faccessat fchmodat fchownat unlinkat readlinkat renameat '
                 'symlinkat'.split())
EXECUTED = set('entrypoint execute getattr map open read'.split())
DIRECTORY = ('vorn_vendor_data_file', 'dir')


class Call:
    """A line of the record."""

    def __init__(self, line):
        call, failed, error = line.partition(' = ')
        self.name, *words = call.split()
        self.objects = [word for word in words if word[0] == '/' or word in NAMED]
        flags = [word for word in words if word not in self.objects]
        self.flags = set(flags[0].split('|')) if flags else set()
        self.error = error if failed else ''

    def is_lookup(self):
        return self.name in PATH_CALLS and bool(self.objects)


def opened(call):
    """An open in the mode O_APPEND may only append; O_TRUNC is a write of its own."""
    found = {'open'}
    if call.flags & {'O_RDONLY', 'O_RDWR'}:
        found.add('read')
    if call.flags & {'O_WRONLY', 'O_RDWR'}:
        found.add('append' if 'O_APPEND' in call.flags else 'write')
    return found | ({'write'} if 'O_TRUNC' in call.flags else set())


def mapped(call):
    found = {'map', 'read'}
    if {'PROT_WRITE', 'MAP_SHARED'} <= call.flags:
        found.add('write')
    return found | ({'execute'} if 'PROT_EXEC' in call.flags else set())


def label_of(name):
    return next((label for pattern, label in FILES.items() if re.fullmatch(pattern, name)), None)


def property_needs(name):
    return next((needs for pattern, needs in PROPERTIES.items() if re.fullmatch(pattern, name)), {})


def folder_needs(name):
    return {label: needed for folder, needs in FOLDERS.items() if name.startswith(folder)
            for label, needed in needs.items()}


def object_needs(call, label, is_last):
    """Label to permissions."""
    kind = label[1]
    if call.name == 'openat':
        created = 'O_CREAT' in call.flags
        found = {label: opened(call) | ({'create'} if created else set())}
        return found | ({DIRECTORY: {'add_name', 'write'}} if created else {})
    if call.name == 'mmap':
        return {label: mapped(call)}
    if call.name in ('write', 'writev'):
        # The open has checked it: a log in the mode O_APPEND needs `append` only.
        return {label: {'write'} if kind == 'fifo_file' else set()}
    if call.name == 'unlinkat':
        return {label: {'unlink'}, DIRECTORY: {'remove_name', 'write'}}
    if call.name == 'symlinkat':
        return {label: {'create'}, DIRECTORY: {'add_name', 'write'}}
    if call.name == 'renameat':
        return {label: {'unlink' if is_last else 'rename'},
                DIRECTORY: {'add_name', 'remove_name', 'write'}}
    if call.name == 'newfstatat' and kind == 'lnk_file' and 'AT_SYMLINK_NOFOLLOW' not in call.flags:
        return {label: {'read'}}
    return {label: set() if call.name in FREE else {PERMISSIONS[call.name]}}


def call_needs(call):
    """What a call needs; LookupError for an object or a call that this file does not know.

    A call that fails has at least looked up the path.
    """
    needs = collections.defaultdict(set)
    if call.name == 'execve':
        needs['qorext_client_exec', 'file'] = EXECUTED
    if call.name == 'exit_group':
        needs['rild', 'process'] = {'sigchld'}
    for name in call.objects:
        label = label_of(name)
        if label is None:
            needs.update(property_needs(name))
            if not (COMMON.fullmatch(name) or property_needs(name) or call.name == 'execve'):
                raise LookupError(f'{name} has no label')
            continue
        if name == 'PIPE':
            needs['rild', 'fd'] = {'use'}
        parts = [folder_needs(name) if call.is_lookup() else {}]
        if not call.error:
            parts.append(object_needs(call, label, name == call.objects[-1]))
        for part in parts:
            for target, permissions in part.items():
                needs[target] = needs[target] | permissions
    return {target: permissions for target, permissions in needs.items() if permissions}


def calls(record=RECORD):
    return [Call(line) for line in record.read_text().splitlines() if not line.startswith('#')]


def needs(recorded):
    """(target, class) to the permissions that the calls need."""
    found = collections.defaultdict(set)
    for call in recorded:
        for target, permissions in call_needs(call).items():
            found[target] |= permissions
    return dict(found)
