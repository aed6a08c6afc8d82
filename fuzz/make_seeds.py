#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes the seeds of the fuzz targets: make_seeds.py FOLDER.

A seed is built as the targets take it apart (FuzzedDataProvider): byte strings from the front, in
their order; numbers from the back, as many bytes as the range needs, the highest byte outermost.
"""

import struct
import sys
from pathlib import Path


class Seed:
    def __init__(self):
        self.front = b""
        self.back = b""

    def bytes(self, content):
        self.front += content
        return self

    def number(self, value, most, least=0):
        span, width = most - least, 0
        while span >> (8 * width):
            width += 1
        self.back += (value - least).to_bytes(width, "big")
        return self

    def flag(self, value):
        return self.number(int(value), 1)

    def text(self, content):
        return self.bytes(content.replace(b"\\", b"\\\\") + b"\\ ")

    def content(self):
        return self.front + self.back[::-1]


    def stretched(self, *pieces):
        """Pieces and how often each comes, in the steps of stretched.h."""
        for piece, times in pieces:
            self.text(piece).number(STRETCHES.index(times), len(STRETCHES) - 1)
        return self


STRETCHES = [1, 2, 31, 64, 65, 5000, 74300, 200000]
DEEP = 74300


def le16(*values):
    return struct.pack(f"<{len(values)}H", *values)


def le32(*values):
    return struct.pack(f"<{len(values)}I", *values)


ROOT = Path(__file__).resolve().parent.parent
REQUEST_SIZE = 17408
ELEMENT_SIZE = 540

UTILITY_ANSWER = (520, le32(0, 17) + bytes(range(17)))
STATUS_OK = (4, le32(0))
OUTCOME_OK = (8, le32(1, 0))
RESULT_OK = (8, le32(0, 0))


def item(content):
    return (ELEMENT_SIZE, le32(0, 0, 28, 0, 0, len(content), len(content)) + content)


def generic(request_id, payload=b"", kind=1):
    return bytes([kind]) + request_id.to_bytes(3, "big") + struct.pack(">I", len(payload)) + payload


def cdma(request_id, payload=b"", code=b"000000"):
    return le32(request_id, len(payload), 0) + code + payload


PLMN_NAME = (3944, bytes(8) + b"\1" + bytes(27) + le32(0) + bytes(8) + le32(5) + b"Carri")
SID_NID = le32(*range(40))
NAM = (b"206555019800001\0" + b"2065551234".ljust(16, b"\0") + le32(4183, 65534, 42) + b"48\0\0" +
       b"311\0" + le32(283, 384, 691, 777, 2) + b"310\0" + b"310120065551239\0" + le32(7) +
       b"123456\0\0")
APNS = (1168, le32(0, 0) + b"\2\1" + bytes(6) + (le32(1, 0xC0000201) + bytes(12) + b"internet") * 2)

# Every request with what the modem answers to it: (size of the structure, its first bytes).
REQUESTS = {
    "silent_reboot": (generic(0x50019), [UTILITY_ANSWER]),
    "sys_info_filter": (generic(0x5001E, b"\1"), [UTILITY_ANSWER]),
    "data_plmn": (generic(0x60001), [(568, bytes(range(256)))]),
    "coverage": (generic(0x50020, b"report\0"), [UTILITY_ANSWER]),
    "coverage_mode": (generic(0x50029, b"\1report"), [UTILITY_ANSWER]),
    "operator_name": (generic(0xA0006, le16(310, 120)), [PLMN_NAME]),
    "antenna_tuning": (generic(0x5002A, b"setting"), [(32, le32(4) + b"done")]),
    "call_end_state": (generic(0x50505, b"\1"), [UTILITY_ANSWER]),
    "generic_unknown": (generic(0x12345, b"?"), []),
    "unclassified": (b"\xFF" * 12, []),
    "short": (b"\1\0\2", []),
    "nv_read_spc": (cdma(0x0200000A), [RESULT_OK]),
    "nv_read_38": (cdma(0x02000017), [item(b"\1\2\3\4")]),
    "nv_write_38": (cdma(0x02000018, b"\1\2\3\4"), [RESULT_OK]),
    "nv_read_10003": (cdma(0x0200000D), [item(b"\1\2\3\4")]),
    "nv_write_10003": (cdma(0x0200000E, b"\1\2\3\4"), [RESULT_OK]),
    "nv_read_37": (cdma(0x0200000F), [item(b"\1")]),
    "nv_write_37": (cdma(0x02000010, b"\1"), [RESULT_OK]),
    "nv_read_39": (cdma(0x02000019), [item(b"\1")]),
    "nv_write_39": (cdma(0x0200001A, b"\1"), [RESULT_OK]),
    "nv_write_spc": (cdma(0x02000008, b"123456"), [RESULT_OK]),
    "pfp": (cdma(0x0200001C), [(12, le32(0, 0, 0))]),
    "utility": (cdma(0x0200001E, le32(3, 1) + b"\1".ljust(256, b"\0")), [UTILITY_ANSWER]),
    "bc10_get": (cdma(0x020000B0), [(8, le32(0, 1))]),
    "bc10_set": (cdma(0x020000B1, le32(1)), [STATUS_OK]),
    "bc14_get": (cdma(0x020000B2), [(8, le32(0, 1))]),
    "bc14_set": (cdma(0x020000B3, le32(1)), [STATUS_OK]),
    "roaming_list": (cdma(0x020000B4, le32(8) + b"segments"), [STATUS_OK]),
    "profile": (cdma(0x020000B5, le32(1)), [STATUS_OK]),
    "factory_reset": (cdma(0x020000B6, b"\1"), [(1, b"\1")]),
    "ddtm_get": (cdma(0x020000B7), [item(b"\1")]),
    "ddtm_set": (cdma(0x020000B8, b"\1"), [RESULT_OK]),
    "obsolete": (cdma(0x020000BB), []),
    "bsr_get": (cdma(0x020000BC), [(12, le32(1, 0, 30))]),
    "bsr_set": (cdma(0x020000BD, le32(30)), [OUTCOME_OK]),
    "lte_option_get": (cdma(0x020000BE), [item(b"\1")]),
    "lte_option_set": (cdma(0x020000BF, b"\1"), [RESULT_OK]),
    "lte_data": (cdma(0x020000C0), [
        (12, le32(1, 0) + b"\2"), (20, le32(1, 0) + b"\1\0\2\0\1\0\3\0\1\4\1\5"),
        (1508, bytes(1104) + b"\1\0" + le16(310, 120)), (64, bytes(36) + b"\1\0\xA0\xF0\x90\xFF"),
        (164, bytes(64) + b"\1" + bytes(7) + le32(230))]),
    "apns": (cdma(0x020000C1), [APNS]),
    "tot_get": (cdma(0x020000C4), [(80, le32(0, 0) + b"\1\0\0\0" + le16(2) + bytes(6) + le32(1, 2))]),
    "tot_update": (cdma(0x020000C5, le16(2) + le32(1, 2)), [OUTCOME_OK]),
    "nam_get": (cdma(0x02000001), [item(bytes(range(17)))] * 15),
    "nam_set": (cdma(0x02000002, NAM, b"123456"), [RESULT_OK, item(b"\1\2\3\4\5\6\7\x08\x09")] * 3),
    "sid_nid_get": (cdma(0x02000003), [item(b"\0" + le16(*range(40)))]),
    "sid_nid_set": (cdma(0x02000004, SID_NID * 2), [RESULT_OK]),
    "mob_p_rev": (cdma(0x02000007), [item(b"\6")]),
    "call_processing": (cdma(0x02000011), [(1012, le32(0, 0, 328) + b"0123456789abcdef" * 20)]),
    "evdo": (cdma(0x02000012), [(1012, le32(0, 0, 104) + b"0123456789ABCDEF" * 6)]),
    "akey": (cdma(0x02000013, b"1" * 26), [RESULT_OK]),
    "rde_write": (cdma(0x02000015, le32(28, 0, 0, 1) + b"\6"), [RESULT_OK]),
    "rde_read": (cdma(0x02000016, le32(28, 0, 0, 1)), [item(b"\6")]),
    "cdma_unknown": (cdma(0x020000FF, b"?"), []),
}


def answered(seed, answers):
    for size, content in answers:
        seed.flag(False).number(len(content), size).bytes(content)
    return seed


def request_seeds():
    for name, (request, answers) in REQUESTS.items():
        seed = Seed().number(len(request), REQUEST_SIZE).bytes(request)
        yield name, answered(seed, answers)


# Position in the target's list of ids, structure.
INDICATIONS = {
    "notify": (0, 0, b""),
    "pfp": (1, 232, le16(1, 2) + le32(3) + bytes(range(224))),
    "log_upload": (2, 520, le32(0, 4) + b"\1\2\3\4"),
    "kpi_first": (2, 520, le32(1, 0) + bytes([7, 1, 0, 0]) + le16(8) + le32(0x01C0FFEE) + b"data"),
    "kpi_only": (2, 520, le32(1, 0) + bytes([7, 1, 1, 0]) + le16(8) + le32(0x01C0FFEE) + b"data"),
    "kpi_record": (2, 520, le32(1, 0) + bytes([7, 1, 1, 0]) + le16(8) + le32(0x02C0FFEE) + b"data"),
    "rf_cable": (2, 520, le32(7, 1) + b"\1"),
    "first_byte": (2, 520, le32(9, 1) + b"\1"),
    "carrier_event": (3, 2, le16(5)),
    "hob_save": (4, 0, b""),
    "generic": (5, 0, b""),
    "lte_error": (6, 116, le32(1) + b"\2\0\0\0" + le32(3) + b"reason"),
    "coverage": (7, 32, bytes(range(32))),
}


def indication_seeds():
    for name, (position, size, structure) in INDICATIONS.items():
        seed = Seed().flag(False).number(position, 7).number(4, 2048).number(0, 127, -128)
        seed.bytes(b"\1\1\0\0")
        if size:
            seed.number(len(structure), size).bytes(structure).flag(False)
        yield name, seed


def kpi_packet(seed, package, sequence, is_last, payload):
    seed.number(0, 5).number(package, 3).number(sequence, 4).flag(is_last)
    return seed.number(len(payload), 65535).bytes(payload)


def kpi_store_seeds():
    header = le32(0x01C0FFEE)
    yield "one_packet", kpi_packet(Seed(), 1, 1, True, header + b"data")
    two = kpi_packet(Seed(), 1, 1, False, header + b"first")
    yield "two_packets", kpi_packet(two, 1, 2, True, b"second")
    full = kpi_packet(Seed(), 1, 1, True, header + b"data").number(5, 5)
    yield "rotation_by_size", kpi_packet(full, 1, 1, True, header + bytes(100))
    old = kpi_packet(Seed(), 1, 1, True, header + b"data").number(3, 5).number(50000, 200000, -200000)
    yield "rotation_by_age", kpi_packet(old, 1, 1, True, header + b"data")


def startup_seeds():
    for name, files in {
            "kernel_panic": [b"POWERUPREASON : 0x00020000\n", None, None],
            "modem_panic": [b"POWERUPREASON : 0x00004000\n", b"1\n", None],
            "restart_reason": [None, None, b"reason\n"]}.items():
        seed = Seed()
        for content in files:
            seed.flag(content is not None)
            if content is not None:
                seed.text(content)
        yield name, seed.text(b"0").number(5, 5, 4)


WORDS = {
    "nv_read": b"nv-read rde-id=28",
    "nv_write": b"nv-write rde-id=28 data=0A0B",
    "set_nam": b"set-nam mdn=2065550198 min=2065551234",
    "operator_name": b"operator-name mcc=310 mnc=120",
    "raw": b"01 00 00 02 0A0B",
    "modem_set": b"set lte.mcc=310 lte.mnc=120",
    "modem_member_of_a_number": b"set lte=1 lte.mcc=2",
    "modem_nv": b"nv 28 0A record=1",
    "modem_indicate": b"indicate pfp rat=1 --count 3 --interval-ms 10",
    "modem_fault": b"fault delay service=nas times=2 delay_ms=5",
    "modem_service": b"service nas down",
    "modem_object": b"{\"command\":\"state\"}",
    "record": b"{\"mdn\":\"2065550198\",\"scm\":42}",
}

# Of what a word or a record is made that is deep.
DEEP_WORDS = {
    "list": [(b"set lte=", 1), (b"[", 200000), (b"]", 200000)],
    "path": [(b"set ", 1), (b"a.", 200000), (b"a=1", 1)],
    "object": [(b"'", 1), (b'{"a":', 74300), (b"1", 1), (b"}", 74300), (b"'", 1)],
    "record": [(b'{"fields":', 1), (b"[", 200000), (b"]", 200000), (b"}", 1)],
}


def tool_seeds():
    for name, line in WORDS.items():
        yield name, Seed().number(2, 9).text(line)
    for name, frame in {
            "cdma": le32(0, 20, 0x0200001D, 232) + bytes(10 + 232 + 2),
            "generic": le32(1, 8, 0x04000401, 8) + le32(0x02C0FFEE) + b"data" + bytes(12)}.items():
        yield "unsolicited_" + name, Seed().number(1, 9).number(4000, 4096, 1).bytes(frame)
        yield "decoded_" + name, Seed().number(3, 9).number(0, 2).bytes(frame)
    for position in range(60):
        reply = le32(0x02000001 + position, 104, 0) + bytes(6) + NAM + bytes(2)
        seed = Seed().number(0, 9).number(position, 255).number(4000, 4096, 1)
        yield f"reply_{position}", seed.bytes(reply)
    for name, line in {
            "item": b"NV Read 8, length 3, data length 3, grde - 000109",
            "address": b"NV Write with RDE index 25, record number 0, offset 0.",
            "dump": b"HexDump: Data 0D00"}.items():
        yield "log_" + name, Seed().number(4, 9).text(line)
    for recording in (ROOT / "tests" / "recordings").glob("*.jsonl"):
        events = recording.read_bytes().splitlines()[1:]
        for number in range(0, len(events), 16):
            part = b"\n".join(events[number:number + 16])
            yield f"{recording.stem}_{number}", Seed().number(5, 9).bytes(part)
    masked = b'{"type":"frame","time":1,"kind":"reply","hex":"**","fields":'
    yield "recording_deep", Seed().number(6, 9).stretched(
        (masked, 1), (b"[", 200000), (b"]", 200000), (b"}\n", 1))
    yield "recording_long", Seed().number(6, 9).stretched((masked, 1), (b'"",', 200000))
    for name, pieces in DEEP_WORDS.items():
        yield "words_deep_" + name, Seed().number(7, 9).stretched(*pieces)
    secret = b"E/RIL-QOREXT( 1): isSpcChanged = 0, (246810 ~ 246810)"
    yield "lines_long", Seed().number(8, 9).number(0, 2).stretched(
        (secret, 1), (b"0123456789abcdef", 74300), (b"\nE/RIL-QOREXT( 1): x\n", 1))
    yield "lines_of_hex", Seed().number(8, 9).number(2, 2).stretched(
        (b"0A000002", 200000), (b"\n01050019 00000000\n", 2))


LINES = {
    "state": b'{"command":"state"}',
    "set": b'{"command":"set","state":{"lte":{"mcc":310,"mnc":120}}}',
    "nv": b'{"command":"nv","rde_id":28,"data":"0a"}',
    "indicate": b'{"command":"indicate","indication":"pfp","fields":{"rat":1},"count":2}',
    "slow_indications": (b'{"command":"indicate","indication":"notify","count":100000,'
                         b'"interval_ms":4294967295}'),
    "fault": b'{"command":"fault","kind":"delay","service":"nas","times":2,"delay_ms":5}',
    "faults": b'{"command":"faults"}',
    "service": b'{"command":"service","name":"nas","up":false}',
    "requests": b'{"command":"requests"}',
    "version": b'{"command":"version"}',
    "quit": b'{"command":"quit"}',
}


def modem_control_seeds():
    for name, line in LINES.items():
        yield name, Seed().number(63 if name == "set" else 0, 63).number(0, 4).text(line)
    deep = b'{"command":"set","state":' + b"[" * DEEP + b"]" * DEEP + b"}"
    yield "deep", Seed().number(0, 63).number(0, 4).text(deep)
    yield "deep_objects", Seed().number(0, 63).number(4, 4).stretched(
        (b'{"command":"set","state":', 1), (b'{"a":', 74300), (b"1", 1), (b"}", 74300), (b"}", 1))
    yield "long_name", Seed().number(0, 63).number(4, 4).stretched(
        (b'{"command":"', 1), (b"name", 74300), (b'"}', 1))
    for message in (0x08, 0x09, 0x0A, 0x0F, 0x10, 0x11, 0x13, 0x16, 0x24, 0x44, 0x4F, 0x100, 0x110):
        seed = Seed().number(0, 63).number(3, 4).number(2, 2).number(7, 1024).bytes(b"\1\4\0\1\0\0\0")
        yield f"packet_{message:x}", seed.number(message, 0x120).flag(False)


def scenario_seeds():
    for scenario in (ROOT / "scenarios").glob("*.toml"):
        yield scenario.stem, Seed().flag(False).bytes(scenario.read_bytes())
    for name, pieces in {
            "deep_key": [(b"a.", 200000), (b"a = 1\n", 1)],
            "deep_header": [(b"[", 1), (b"a.", 200000), (b"a]\n", 1)],
            "deep_tables": [(b"a = ", 1), (b"{a.a.a=", 31), (b"1", 1), (b"}", 31)],
            "deep_lists": [(b"a = ", 1), (b"[", 200000)],
            "texts": [(b"a = '''", 1), (b"a.", 5000), (b"''''\nb = \"\\\"\"\n", 1)]}.items():
        yield name, Seed().flag(True).stretched(*pieces)


def codec_seeds():
    tlvs = b"\2\4\0\0\0\0\0" + b"\1\4\0\1\0\0\0" + b"\x10\2\0\1\0" + b"\x12\5\0\x36\1\x78\0\0"
    for position in range(0, 100, 3):
        seed = Seed().number(position, 255).number(9, 65535).flag(position % 2)
        yield f"message_{position}", seed.bytes(tlvs)


def transport_seeds():
    # A watch that is told of nothing, no channel, then a client that attaches and sends.
    steps = Seed().number(0, 2).number(0, 4).number(0, 4).number(0, 6).number(0, 2).number(2, 6)
    steps.number(5, 6).flag(False).number(3, 4).number(0, 2).number(1, 2).number(1, 2).number(1, 5)
    yield "lookup", steps


def plain_seeds(**contents):
    for name, content in contents.items():
        yield name, Seed().bytes(content)


TARGETS = {
    "codec": codec_seeds(),
    "gsm": plain_seeds(name=b"Carrier", controls=b"\x1b\x0d\x00\x7f", utf8=b"\xc3\xa4\x80"),
    "hex_text": plain_seeds(digits=b"0123456789abcdefABCDEF", others=b"0g1 2:3"),
    "indication": indication_seeds(),
    "kpi_store": kpi_store_seeds(),
    "modem_control": modem_control_seeds(),
    "nam": plain_seeds(record=NAM),
    "qrtr_transport": transport_seeds(),
    "request": request_seeds(),
    "scenario": scenario_seeds(),
    "startup": startup_seeds(),
    "tool": tool_seeds(),
    "unix_transport": transport_seeds(),
}


def main(folder):
    for target, seeds in TARGETS.items():
        place = Path(folder) / target
        place.mkdir(parents=True, exist_ok=True)
        for name, seed in seeds:
            (place / name).write_bytes(seed.content())


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    main(sys.argv[1])
