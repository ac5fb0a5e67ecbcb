#!/usr/bin/env python3
"""Prints size, kind and SHA-256 of the pixels of PNG files, one line each: two files that compress the same picture
differently give the same line but for the name. For pictures without interlacing, as this tree writes them."""
import hashlib
import struct
import sys
import zlib

CHANNELS = {0: 1, 2: 3}  # gray (also black and white), colour


def read_chunks(data):
    if data[:8] != b"\x89PNG\r\n\x1a\n":
        raise ValueError("no PNG file")
    at = 8
    while at < len(data):
        length, kind = struct.unpack(">I4s", data[at : at + 8])
        yield kind, data[at + 8 : at + 8 + length]
        at += 12 + length


def paeth(left, above, corner):
    to_left, to_above = abs(above - corner), abs(left - corner)
    to_corner = abs(left + above - 2 * corner)
    if to_left <= to_above and to_left <= to_corner:
        return left
    return above if to_above <= to_corner else corner


PREDICTIONS = (
    None,
    lambda left, above, corner: left,
    lambda left, above, corner: above,
    lambda left, above, corner: (left + above) // 2,
    paeth,
)


def unfilter(kind, row, above, step):
    predict = PREDICTIONS[kind]
    if predict is None:
        return row
    for i in range(len(row)):
        left, corner = (row[i - step], above[i - step]) if i >= step else (0, 0)
        row[i] = (row[i] + predict(left, above[i], corner)) & 0xFF
    return row


def describe(path):
    with open(path, "rb") as file:
        chunks = list(read_chunks(file.read()))
    header = struct.unpack(">IIBBBBB", chunks[0][1])
    width, height, depth, colour, _, _, interlaced = header
    if interlaced or colour not in CHANNELS:
        raise ValueError("a PNG of another kind than this tree writes")
    raw = zlib.decompress(b"".join(body for kind, body in chunks if kind == b"IDAT"))
    row_bytes = (width * depth * CHANNELS[colour] + 7) // 8
    step = max(1, depth * CHANNELS[colour] // 8)
    digest = hashlib.sha256()
    above = bytearray(row_bytes)
    for y in range(height):
        at = y * (row_bytes + 1)
        above = unfilter(raw[at], bytearray(raw[at + 1 : at + 1 + row_bytes]), above, step)
        digest.update(above)
    return f"{width}x{height} {depth * CHANNELS[colour]} bits {digest.hexdigest()}"


for name in sys.argv[1:]:
    print(describe(name), name)
