# SPDX-License-Identifier: Apache-2.0
"""What the daemon's policy has to come to, with the stand-in's policy and with a phone's."""
import re

# What the daemon's domain is allowed: just what its system calls need.
NEEDS = {
    ('rild', 'process'): 'sigchld',
    ('rild', 'fd'): 'use',
    ('rild', 'fifo_file'): 'read write',
    ('qorext_client_exec', 'file'): 'entrypoint execute getattr map open read',
    ('qorext_client', 'qipcrtr_socket'): 'create getattr read setopt write',
    ('init', 'unix_stream_socket'): 'connectto',
    ('property_socket', 'sock_file'): 'write',
    ('qorext_prop', 'property_service'): 'set',
    ('bootloader_prop', 'file'): 'getattr map open read',
    ('telephony_config_prop', 'file'): 'getattr map open read',
    ('proc_bootinfo', 'file'): 'open read',
    ('sysfs_modem_restarts', 'file'): 'open read',
    ('qor_hob_ram_device', 'chr_file'): 'map open read write',
    ('block_device', 'dir'): 'search',
    ('dhob_block_device', 'blk_file'): 'open read write',
    ('system_data_file', 'lnk_file'): 'read',
    ('vendor_data_file', 'dir'): 'search',
    ('vorn_vendor_data_file', 'dir'): 'add_name getattr open read remove_name search write',
    ('vorn_vendor_data_file', 'file'): 'append create getattr open read setattr unlink write',
    ('vorn_vendor_data_file', 'lnk_file'): 'create read rename unlink',
}
# What its parent may do with it.
PARENT = {
    ('qorext_client_exec', 'file'): 'execute getattr map open read',
    ('qorext_client', 'process'): 'rlimitinh sigkill siginh signal transition',
}
TYPE_OF_PATH = {
    '/dev/qor_hob_ram': 'qor_hob_ram_device',
    '/dev/block/bootdevice/by-name/dhob': 'dhob_block_device',
    '/data/vorn': 'system_data_file',
    '/data/vendor/vorn': 'vorn_vendor_data_file',
    '/data/vendor/vorn/vorn_20261116065532.log': 'vorn_vendor_data_file',
    '/data/vendor/vorn/.0001': 'vorn_vendor_data_file',
    '/dev/block/by-name/dhob': 'dhob_block_device',
    '/dev/block/platform/soc/1d84000.ufshc/by-name/dhob': 'dhob_block_device',
    '/dev/block/by-name/modem': 'block_device',
    '/vendor/bin/qorext_client': 'qorext_client_exec',
    '/vendor/bin/another': 'vendor_file',
}
TYPE_OF_KERNEL_FILE = {
    '/proc/bootinfo': 'proc_bootinfo',
    '/sys/module/subsystem_restart/parameters/modem_restarts': 'sysfs_modem_restarts',
    '/sys/module/pil_q6v5_mss/parameters/ssr_reason': 'sysfs_modem_restarts',
}
TYPE_OF_PROPERTY = {
    'ril.baseband.config.ver_num': 'qorext_prop',
    'ril.baseband.config.version': 'qorext_prop',
    'ril.baseband.rfcable.status': 'qorext_prop',
    'ril.lte.bc.config': 'qorext_prop',
    'ro.baseband': 'bootloader_prop',
    'ro.radio.imei.sv': 'telephony_config_prop',
}


def documented_rules(manual):
    """(target, class) to permissions, of the table in docs/phone.md."""
    table = manual.split('\n## SELinux domain\n')[1].split('\n### ')[0]
    return {(target, kind): set(permissions.split())
            for targets, kind, permissions in
            re.findall(r'^\| (`.*?`) \| (\w+) \| ([a-z_ ]+) \|', table, re.M)
            for target in re.findall(r'`(\w+)`', targets)}


def confinement_rules(manual):
    """The rule that lets the parent start the daemon under its list of system calls."""
    return re.search(r'^  (allow rild \w+:process2 .*)$', manual, re.M).group(1) + '\n'


def dropbox_rules(manual):
    """The rules that let the daemon's domain call the service."""
    return manual.split('\n### DropBox\n')[1].split('```\n')[1]
