"""Broadcasts to measure with, made on the spot."""
import collections
import itertools
import json
import os
import subprocess

PACKET = 188
NULL_PID = 0x1FFF
EIT_PID = 18
CAROUSEL_PID = 3000
PICTURE_PIDS = range(2000, 2012)
SERVICES = (28106, 28107, 28108, 28120)  # of tsmake's sample
# One in so many of the packets that are not tsmake's.
ONE_IN_EIT = 30
ONE_IN_CAROUSEL = 15


def crc_table():
    for remainder in range(0, 1 << 32, 1 << 24):
        for _ in range(8):
            remainder = (remainder << 1 ^ (0x104C11DB7 if remainder >> 31 else 0)) & 0xFFFFFFFF
        yield remainder


CRC_TABLE = list(crc_table())


def section(table_id, extension, number, last, content):
    head = bytes([table_id]) + (0xB000 | 5 + len(content) + 4).to_bytes(2, "big") + extension.to_bytes(2, "big")
    body = head + bytes([0xC1, number, last]) + content
    crc = 0xFFFFFFFF
    for byte in body:
        crc = (crc << 8 & 0xFFFFFFFF) ^ CRC_TABLE[crc >> 24 ^ byte]
    return body + crc.to_bytes(4, "big")


def present_following():
    for service in SERVICES:
        for number in range(2):
            yield section(0x4E, service, number, 1, b"\x04\x01\x00\x01\x01\x4E" + bytes(100))


def schedule():
    for service in SERVICES:
        for number in range(0, 64, 8):
            yield section(0x50, service, number, 56, b"\x04\x01\x00\x01\x38\x50" + bytes(range(64)) * 24)


def carousel():
    for number in range(16):
        yield section(0x3C, 1, number, 15, bytes(range(200)) * 20)


def packets_of(pid, sections):
    """Each section begins a packet. Without continuity counters."""
    for each in sections:
        payload = b"\0" + each
        for at in range(0, len(payload), PACKET - 4):
            start = 0x40 if at == 0 else 0
            yield bytes([0x47, start | pid >> 8, pid & 0xFF, 0x10]) + payload[at:at + PACKET - 4].ljust(PACKET - 4, b"\xFF")


def pictures():
    payload = bytes(7 * index & 0xFF for index in range(PACKET - 4))
    return [bytes([0x47, pid >> 8, pid & 0xFF, 0x10]) + payload for pid in PICTURE_PIDS]


def pid_of(packet):
    return (packet[1] & 0x1F) << 8 | packet[2]


def filled(broadcast, tables):
    """The broadcast with pictures in place of its null packets; with `tables`, an EIT schedule and a carousel, too."""
    eit = [*present_following(), *(schedule() if tables else ())]
    turns = {ONE_IN_EIT: itertools.cycle(list(packets_of(EIT_PID, eit)))}
    if tables:
        turns[ONE_IN_CAROUSEL] = itertools.cycle(list(packets_of(CAROUSEL_PID, carousel())))
    others = itertools.cycle(pictures())
    counters = collections.Counter()
    places = itertools.count(1)
    for at in range(0, len(broadcast), PACKET):
        packet = broadcast[at:at + PACKET]
        if pid_of(packet) not in (NULL_PID, EIT_PID):
            yield packet
            continue
        place = next(places)
        packet = next(next((turn for every, turn in turns.items() if place % every == 0), others))
        pid = pid_of(packet)
        yield packet[:3] + bytes([0x10 | counters[pid] & 0x0F]) + packet[4:]
        counters[pid] += 1


def described(tsmake, path, description, seconds):
    with open(path + ".json", "w", encoding="utf-8") as file:
        json.dump(description, file)
    subprocess.run([tsmake, path, "--description", path + ".json", "--seconds", str(seconds)], check=True)
    os.remove(path + ".json")


def sample_description(tsmake):
    text = subprocess.run([tsmake, "--print-sample"], check=True, capture_output=True, text=True).stdout
    return json.loads("\n".join(line for line in text.splitlines() if not line.lstrip().startswith("//")))


def write_full(tsmake, path, size, tables):
    """Four services at 40 Mbit/s, of about this size: three seconds again and again."""
    described(tsmake, path, {**sample_description(tsmake), "bitRate": 40000000}, 3)
    with open(path, "rb") as file:
        round_of_it = b"".join(filled(file.read(), tables))
    with open(path, "wb") as file:
        for _ in range(max(1, size // len(round_of_it))):
            file.write(round_of_it)


def write_services(tsmake, path, count):
    """So many services, each with all that tsmake gives to a service."""
    sample = sample_description(tsmake)
    service = sample["services"][0]
    described(tsmake, path, {**sample, "bitRate": 40000000,
                             "services": [{**service, "id": 1000 + number} for number in range(count)]}, 2)
