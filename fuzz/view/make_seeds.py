#!/usr/bin/env python3
# Writes the seed corpus of view_dispatch_fuzz: small programs in the byte
# layout its reader takes (see Input and Record in view_dispatch_fuzz.cpp).
import os

NAMES = {"holding": 1, "tree": 2, "tree_all": 3, "master": 4, "present": 5, "mrv_cj": 6,
         "topten": 7, "lien": 8, "peer": 9, "wrong_case": 10}  # kNames index + 1 (0 is ""...)
TAGS = {"client": 0, "segment": 1, "symbol": 2, "code": 3, "bse_code": 4, "product": 5,
        "qty": 6, "t1": 13, "haircut": 15, "type": 16, "close": 17, "last": 18, "tick": 19,
        "time": 20, "isin": 21, "value": 22, "peer": 23, "top_symbol": 24, "report_seg": 25,
        "lien": 26}
STATUS = {"1": 0, "0": 1, "12": 2, "": 3, "-5": 4, "huge": 5, "unreadable": 6, None: 7}
SUB = {"NSE": 0, "BSE": 1, "CSE": 2, "NSE_LTP": 3, "BSE_LTP": 4, "CSE_LTP": 5, "": 6}


def text(s):
    b = s.encode()
    return bytes([3, len(b)]) + b


def client(i):
    return bytes([0, i])


def number(i):
    return bytes([1, i])


def record(name, status=None, sub=None, fields=()):
    out = bytes([3, 1, NAMES[name] - 1, STATUS[status]])
    out += bytes([1, SUB[sub]]) if sub is not None else bytes([0])
    out += bytes([len(fields)])
    for tag, value in fields:
        out += bytes([1, TAGS[tag]]) + value
    return out


def request(i=0):
    return bytes([0, i])


def holding(c, product="CNC", qty=2):
    return record("holding", fields=[("client", client(c)), ("segment", text("nse_cm")),
                                     ("symbol", text("ABC-EQ")), ("code", text("1234")),
                                     ("product", text(product)), ("qty", number(qty)),
                                     ("haircut", text("1250")), ("type", text("1")),
                                     ("close", text("10050"))])


seeds = {
    "holdings": request() + holding(0) + holding(1, "MTF", 3) + holding(2) + record("holding", "1"),
    "holdings_bad_numbers": request(1) + holding(0, "CNC", 4) + holding(1, "X", 5) +
    record("holding", fields=[("client", text("NOBODY")), ("qty", number(3))]) +
    record("holding", fields=[("client", client(2)), ("qty", text("12abc")), ("t1", number(9))]),
    "two_requests": request() + request(1) + holding(0) + record("holding", "1") + holding(1) +
    holding(2) + record("holding", "12"),
    "prices": request() + holding(0) + record("holding", "1") + b"".join(
        record("master", None, sub, [("last", number(2)), ("symbol", text("ABC-EQ")),
                                     ("tick", number(3)), ("time", number(0))])
        for sub in ("NSE_LTP", "BSE_LTP", "CSE_LTP", "NSE")) + record("master", "1"),
    "present_values": b"".join(record("present", fields=[("client", client(c)),
                                                          ("symbol", text("ABC-EQ")),
                                                          ("value", number(2))])
                               for c in (0, 1, 0)) + record("present", "1"),
    "positions": record("tree", None, "NSE", [("client", client(0))]) +
    record("tree", "1", "NSE") + record("tree", None, "BSE") + record("tree", "1", "BSE") +
    record("tree", None, "CSE") + record("tree_all", None) + record("tree_all", "1"),
    "bse_counterpart_and_peer": record("mrv_cj", fields=[("symbol", text("ABC"))]) +
    record("mrv_cj") + record("peer", fields=[("peer", text("P001"))]) + record("peer", "1"),
    "statuses": record("holding", "0") + record("holding", "") + record("lien", "unreadable") +
    record("holding", "huge") + record("holding", "-5") + record("wrong_case") +
    record("topten", fields=[("top_symbol", text("ABC"))]),
    "sort_and_filter": request() + holding(0) + bytes([1, 6]) + holding(1) +
    bytes([2, 0]) + bytes([2]) + b"C1" + bytes([0]) + holding(2) + bytes([1, 6]) +
    record("holding", "1"),
    "long_values": request() + record("holding", fields=[("client", client(1)),
                                                          ("symbol", bytes([2, 200, 1])),
                                                          ("qty", bytes([2, 100, 7])),
                                                          ("product", text("\xff\x00;~"))]),
}

here = os.path.join(os.path.dirname(os.path.abspath(__file__)), "corpus")
os.makedirs(here, exist_ok=True)
for name, data in seeds.items():
    with open(os.path.join(here, name), "wb") as f:
        f.write(data)
