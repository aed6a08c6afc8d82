#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes the seeds of the fuzz targets: make_seeds.py ENCODER FOLDER.

ENCODER is the program of encode.cpp. A seed has the layout that FuzzedDataProvider reads: byte
strings from the front, in order; numbers from the back, with as many bytes as the range needs, the
most significant byte last.
"""

import json
import subprocess
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
        """Pieces and their repetitions, one of the counts in STRETCHES."""
        for piece, times in pieces:
            self.text(piece).number(STRETCHES.index(times), len(STRETCHES) - 1)
        return self


STRETCHES = [1, 2, 31, 64, 65, 5000, 74300, 200000]
DEEP = 74300


ROOT = Path(__file__).resolve().parent.parent
REQUEST_SIZE = 17408


class Encoder:
    """The program that encodes frames and structures by the tables of the programs."""

    def start(self, program):
        self.process = subprocess.Popen([program], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        text=True)

    def encode(self, line):
        self.process.stdin.write(line + "\n")
        self.process.stdin.flush()
        text = self.process.stdout.readline()
        if not text:
            sys.exit(f"make_seeds.py: cannot encode: {line}")
        return bytes.fromhex(text)


ENCODER = Encoder()


def request(line):
    return ENCODER.encode("request " + line)


def unsolicited(name, data):
    return ENCODER.encode(f"unsolicited {name} {data.hex()}")


def structure(kind, message, fields):
    return ENCODER.encode(f"{kind} {message} {json.dumps(fields)}")


def le32(value):
    return value.to_bytes(4, "little")


SET_NAM = ("set-nam spc=123456 mdn=206555019800001 min=2065551234 sid=4183 nid=65534 scm=42 "
           "imsi-11-12=48 imsi-mcc=311 vocoder=2 imsi-t=310120065551239 overload-class=7")
KPI_START = 0x01C0FFEE
KPI_RECORD = 0x02C0FFEE


def item(content):
    return "qorext element_read", {"rde_id": 28, "length": len(content), "data": content.hex()}


def hexadecimal(text):
    return "qorext engineering_info", {"data": text.encode().hex()}


UTILITY = ("qorext utils", {"data": bytes(range(17)).hex()})
WRITTEN = ("qorext element_write", {})
BAND = ("qorext read_band", {"band": 1})
NAM_ITEMS = [item(bytes(range(17)))] * 15

# Every request with the responses that the modem gives to it.
REQUESTS = {
    "silent-reboot": [UTILITY],
    "sysinfo-filter filter=1": [UTILITY],
    "data-plmn": [("qorext data_plmn", {"record": bytes(range(256)).hex()})],
    "coverage text=report": [UTILITY],
    "coverage-mode mode=1 text=report": [UTILITY],
    "operator-name mcc=310 mnc=120": [("nas get_plmn_name", {"short_name": b"Carri".hex()})],
    "tune data=73657474696E67": [("qorext tuner", {"data": b"done".hex()})],
    "call-end-radio-state value=1": [UTILITY],
    "generic id=0x12345 data=3F": [],
    "check-spc code=123456": [item(b"123456")],
    "read-item-38": [item(b"\1\2\3\4")],
    "write-item-38 data=01020304": [WRITTEN],
    "read-item-10003": [item(b"\1\2\3\4")],
    "write-item-10003 data=01020304": [WRITTEN],
    "read-item-37": [item(b"\1")],
    "write-item-37 data=01": [WRITTEN],
    "read-item-39": [item(b"\1")],
    "write-item-39 data=01": [WRITTEN],
    "write-item-28 data=313233343536": [WRITTEN],
    "pfp": [("qorext pfp", {})],
    "utils type=3 data=01": [UTILITY],
    "get-bc10": [BAND],
    "set-bc10 status=1": [("qorext write_band", {})],
    "get-bc14": [BAND],
    "set-bc14 status=1": [("qorext write_band", {})],
    "set-roaming-list data=7365676D656E7473": [("qorext set_roaming_list_segment", {})],
    "set-profile profile=1": [("qorext switch_profile", {})],
    "factory-reset flag=1": [("qorext factory_reset", {"outcome": 1})],
    "get-ddtm": [item(b"\1")],
    "set-ddtm ddtm=1": [WRITTEN],
    "obsolete-bb": [],
    "get-bsr-timer": [("qorext get_bsr_timer", {"outcome": 1, "timer": 30})],
    "set-bsr-timer timer=30": [("qorext set_bsr_timer", {"outcome": 1})],
    "get-lte-option": [item(b"\1")],
    "set-lte-option data=01": [WRITTEN],
    "get-lte-data": [
        ("qorext get_lte_service_state", {"outcome": 1, "state": 2}),
        ("qorext get_lte_channel", {"outcome": 1, "second_channel": 2, "first_channel": 3,
                                    "third_value": 4, "fourth_value": 5}),
        ("nas get_serving_system", {"mcc": 310, "mnc": 120}),
        ("nas get_sig_info", {"lte_rssi": -96, "lte_rsrq": -16, "lte_rsrp": -112}),
        ("nas get_tx_rx_info", {"tx_power": 230})],
    "get-apn": [("qorext get_active_ehrpd_apn", {
        "count": 2, "count_high": 1, "name": [b"internet".hex()] * 2})],
    "get-tot": [("qorext get_tot_order", {"entries": [1, 2]})],
    "update-tot entries=1,2": [("qorext update_tot_order", {"outcome": 1})],
    "get-nam": NAM_ITEMS,
    SET_NAM: [WRITTEN, item(b"\1\2\3\4\5\6\7\x08\x09")] * 3,
    "get-sid-nid": [item(bytes(range(81)))],
    "set-sid-nid pairs=" + ",".join(f"{n}/{n + 1}" for n in range(20)): [WRITTEN],
    "get-mob-p-rev": [item(b"\6")],
    "verify-subsidy-lock code=123456": [("dms verify_subsidy_lock", {})],
    "get-call-processing": [hexadecimal("0123456789abcdef" * 20 + "01234567")],
    "get-evdo": [hexadecimal("0123456789ABCDEF" * 6 + "01234567")],
    "write-akey spc=000000 akey=" + "1" * 26: [("nas write_akey", {})],
    "nv-write rde-id=28 data=06": [WRITTEN],
    "nv-read rde-id=28 length=1": [item(b"\6")],
    "cdma id=0x020000FF data=3F": [],
}
NO_REQUESTS = {"unclassified": b"\xFF" * 12, "short": b"\1\0\2"}


def request_seed(frame, answers):
    seed = Seed().number(len(frame), REQUEST_SIZE).bytes(frame)
    for name, fields in answers:
        content = structure("response", name, fields)
        seed.flag(False).number(len(content), len(content)).bytes(content)
    return seed


def request_seeds():
    for line, answers in REQUESTS.items():
        yield line.split()[0], request_seed(request(line), answers)
    for name, frame in NO_REQUESTS.items():
        yield name, request_seed(frame, [])


def kpi_data(header, is_last):
    return bytes([7, 1, is_last, 0, 8, 0]) + le32(header) + b"data"


def utils(kind, data):
    return "utils", {"type": kind, "data": data.hex()}


# In the order of the ids in indication_fuzz.cpp.
INDICATION_IDS = ["notify", "pfp", "utils", "carrier_event", "hob_save", "generic", "lte_error",
                  "coverage"]
INDICATIONS = {
    "notify": ("notify", {}),
    "pfp": ("pfp", {"rat": 2, "tbl_idx": 3, "remaining_bytes": bytes(range(224)).hex()}),
    "log_upload": utils(0, b"\1\2\3\4"),
    "kpi_first": utils(1, kpi_data(KPI_START, 0)),
    "kpi_only": utils(1, kpi_data(KPI_START, 1)),
    "kpi_record": utils(1, kpi_data(KPI_RECORD, 1)),
    "rf_cable": utils(7, b"\1"),
    "first_byte": utils(9, b"\1"),
    "carrier_event": ("carrier_event", {"value": 5}),
    "hob_save": ("hob_save", {}),
    "generic": ("generic", {}),
    "lte_error": ("lte_error", {"first_value": 1, "second_value": 2, "third_value": 3,
                                "text": b"reason".hex()}),
    "coverage": ("coverage", {"report": bytes(range(32)).hex()}),
}


def indication_seeds():
    for name, (message, fields) in INDICATIONS.items():
        content = structure("indication", "qorext " + message, fields)
        seed = Seed().flag(False).number(INDICATION_IDS.index(message), len(INDICATION_IDS) - 1)
        seed.number(4, 2048).number(0, 127, -128).bytes(b"\1\1\0\0")
        if content:
            seed.number(len(content), len(content)).bytes(content).flag(False)
        yield name, seed


def kpi_packet(seed, package, sequence, is_last, payload):
    seed.number(0, 5).number(package, 3).number(sequence, 4).flag(is_last)
    return seed.number(len(payload), 65535).bytes(payload)


def kpi_store_seeds():
    header = le32(KPI_START)
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

# The pieces of deeply nested words and records.
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
            "cdma": unsolicited("pfp", bytes(232)),
            "generic": unsolicited("kpi-record", le32(KPI_RECORD) + b"data")}.items():
        yield "unsolicited_" + name, Seed().number(1, 9).number(4000, 4096, 1).bytes(frame)
        yield "decoded_" + name, Seed().number(3, 9).number(0, 2).bytes(frame)
    record = request(SET_NAM)
    for position in range(60):
        reply = le32(0x02000001 + position) + record[4:] + bytes(2)
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
    # A watch without events, no channel, then a client that attaches and sends.
    steps = Seed().number(0, 2).number(0, 4).number(0, 4).number(0, 6).number(0, 2).number(2, 6)
    steps.number(5, 6).flag(False).number(3, 4).number(0, 2).number(1, 2).number(1, 2).number(1, 5)
    yield "lookup", steps


def nam_seeds():
    yield "record", Seed().bytes(request(SET_NAM))


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
    "nam": nam_seeds(),
    "qrtr_transport": transport_seeds(),
    "request": request_seeds(),
    "scenario": scenario_seeds(),
    "startup": startup_seeds(),
    "tool": tool_seeds(),
    "unix_transport": transport_seeds(),
}


def main(encoder, folder):
    ENCODER.start(encoder)
    for target, seeds in TARGETS.items():
        place = Path(folder) / target
        place.mkdir(parents=True, exist_ok=True)
        for name, seed in seeds:
            (place / name).write_bytes(seed.content())


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(*sys.argv[1:])
