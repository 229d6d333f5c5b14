#!/usr/bin/env python3
"""Takes the object carousels out of transport streams, as an independent count beside the reader in si.

Written from ISO/IEC 13818-6 and TR 101 202 alone; shares no code with the reader. Prints a line for each object of each
carousel (PID, path, kind, size, SHA-256), for each event of a stream event object, and for each module that is not whole.

    extract_carousels.py FILE.ts... > carousel_streams.list

Each stream is read as a whole, and again only its first packets, so that modules are missing.
"""
import hashlib
import os
import sys
import zlib

PACKET = 188
PERCENTS = (100, 40)


def crc_is_right(section):
    crc = 0xFFFFFFFF
    for byte in section:
        crc ^= byte << 24
        for _ in range(8):
            crc = (crc << 1) ^ 0x04C11DB7 if crc & 0x80000000 else crc << 1
        crc &= 0xFFFFFFFF
    return crc == 0


def sections_of(stream):
    """(PID, section) of each whole DSM-CC section, in order. A lost packet ends the section that is being put together."""
    partial = {}
    counters = {}
    for at in range(0, len(stream) - PACKET + 1, PACKET):
        packet = stream[at:at + PACKET]
        if packet[0] != 0x47 or packet[1] & 0x80 or packet[3] & 0xC0:
            continue
        pid = (packet[1] & 0x1F) << 8 | packet[2]
        if not packet[3] & 0x10 or pid == 0x1FFF:
            continue
        counter = packet[3] & 0x0F
        payload = packet[4:]
        if packet[3] & 0x20:
            payload = payload[1 + payload[0]:] if payload else b""
        expected = counters.get(pid)
        counters[pid] = counter
        if expected is not None and counter == expected:
            previous = partial.get((pid, "last"))
            if previous == packet:
                continue
        if expected is not None and counter != (expected + 1) & 0x0F:
            partial.pop(pid, None)
        partial[(pid, "last")] = packet
        if packet[1] & 0x40:
            if not payload:
                continue
            pointer = payload[0]
            if pid in partial:
                yield from take_sections(partial, pid, partial[pid] + payload[1:1 + pointer], True)
            partial[pid] = b""
            yield from take_sections(partial, pid, payload[1 + pointer:], False)
        elif pid in partial:
            yield from take_sections(partial, pid, partial[pid] + payload, False)


def take_sections(partial, pid, data, ends):
    while len(data) >= 3 and data[0] != 0xFF:
        length = 3 + ((data[1] & 0x0F) << 8 | data[2])
        if len(data) < length:
            break
        section, data = data[:length], data[length:]
        if section[0] in (0x3B, 0x3C) and crc_is_right(section):
            yield pid, section
    if ends or (data and data[0] == 0xFF):
        partial.pop(pid, None)
    else:
        partial[pid] = data


class Reader:
    def __init__(self, data):
        self.data = data
        self.at = 0

    def take(self, count):
        if count > len(self.data) - self.at:
            raise ValueError("too short")
        self.at += count
        return self.data[self.at - count:self.at]

    def number(self, width):
        return int.from_bytes(self.take(width), "big")

    def sized(self, width):
        return self.take(self.number(width))

    def rest(self):
        return self.take(len(self.data) - self.at)


def message_of(section):
    """(message id, transaction or download id, payload)"""
    reader = Reader(section[8:-4])
    if reader.number(2) != 0x1103:
        raise ValueError("not a download message")
    message = reader.number(2)
    transaction = reader.number(4)
    reader.take(1)
    adaptation = reader.number(1)
    length = reader.number(2)
    reader.take(adaptation)
    return message, transaction, reader.take(length - adaptation)


def reference_of(reader):
    """(carousel, module, key) of the BIOP profile of an IOR, or None."""
    kind_size = reader.number(4)
    reader.take(kind_size + -kind_size % 4)
    found = None
    for _ in range(reader.number(4)):
        tag = reader.number(4)
        body = Reader(reader.sized(4))
        if tag != 0x49534F06:
            continue
        body.take(1)
        for _ in range(body.number(1)):
            component = body.number(4)
            data = Reader(body.sized(1))
            if component == 0x49534F50:
                carousel, module = data.number(4), data.number(2)
                data.take(2)
                found = (carousel, module, data.sized(1))
    return found


def descriptors_of(data):
    reader = Reader(data)
    while reader.at < len(data):
        tag = reader.number(1)
        yield tag, reader.sized(1)


def module_infos(payload):
    reader = Reader(payload)
    download = reader.number(4)
    block_size = reader.number(2)
    reader.take(10)
    reader.sized(2)
    modules = {}
    for _ in range(reader.number(2)):
        module, size, version = reader.number(2), reader.number(4), reader.number(1)
        info = Reader(reader.sized(1))
        original = None
        info.take(12)
        for _ in range(info.number(1)):
            info.take(6)
            info.sized(1)
        for tag, body in descriptors_of(info.sized(1)):
            if tag == 0x09:
                original = int.from_bytes(body[1:5], "big")
        modules[module] = (size, version, original, block_size)
    return download, modules


def bindings_of(body):
    reader = Reader(body)
    for _ in range(reader.number(2)):
        for _ in range(reader.number(1)):
            name = reader.sized(1).rstrip(b"\0")
            kind = reader.sized(1)
        reader.take(1)
        reference = reference_of(reader)
        reader.sized(2)
        yield name, kind, reference


def events_of(info, body):
    """(name, event id). Both widths of the duration's microseconds are in use; the right one uses all of the info."""
    reader = Reader(body)
    for _ in range(reader.number(1)):
        reader.take(6)
        reader.sized(1)
    ids = [reader.number(2) for _ in range(reader.number(1))]
    for width in (2, 4):
        try:
            names = Reader(info)
            names.sized(1)
            names.take(4 + width + 3)
            found = [names.sized(1).rstrip(b"\0") for _ in range(names.number(2))]
            if len(found) == len(ids) and names.at == len(info):
                return list(zip(found, ids))
        except ValueError:
            pass
    return []


def objects_of(module):
    """key -> (kind, info, body)"""
    objects = {}
    reader = Reader(module)
    while reader.at < len(module):
        if reader.take(4) != b"BIOP":
            raise ValueError("no BIOP message")
        reader.take(4)
        message = Reader(reader.sized(4))
        key = message.sized(1)
        kind = message.sized(4)
        info = message.sized(2)
        for _ in range(message.number(1)):
            message.take(4)
            message.sized(2)
        objects[key] = (kind, info, message.sized(4))
    return objects


class Carousels:
    """What a stream has. Keeps the last version that its DIIs announce."""

    def __init__(self):
        self.gateways = {}  # PID -> reference
        self.infos = {}  # (download, module) -> (size, version, original size, block size)
        self.blocks = {}  # (download, module, version) -> number -> bytes

    def read(self, pid, section):
        message, transaction, payload = message_of(section)
        if message == 0x1006:
            reader = Reader(payload)
            reader.take(20)
            reader.sized(2)
            self.gateways[pid] = reference_of(Reader(reader.sized(2)))
        elif message == 0x1002:
            download, modules = module_infos(payload)
            for module, info in modules.items():
                self.infos[(download, module)] = info
        elif message == 0x1003:
            reader = Reader(payload)
            module, version = reader.number(2), reader.number(1)
            reader.take(1)
            number = reader.number(2)
            self.blocks.setdefault((transaction, module, version), {})[number] = reader.rest()

    def module(self, download, module):
        """The uncompressed bytes, or why there are none."""
        info = self.infos.get((download, module))
        if info is None:
            return None, "is in no list"
        size, version, original, block_size = info
        count = -(-size // block_size)
        blocks = self.blocks.get((download, module, version), {})
        if len(blocks) < count:
            return None, f"has {len(blocks)} of {count} blocks"
        data = b"".join(blocks[number] for number in range(count))
        if len(data) != size:
            return None, f"has {len(data)} of {size} bytes"
        return (zlib.decompress(data) if original is not None else data), ""

    def lines(self):
        for pid, gateway in sorted(self.gateways.items()):
            missing = {}
            objects = {}
            lines = []

            def look(reference):
                carousel, module, key = reference
                if (carousel, module) not in objects:
                    data, why = self.module(carousel, module)
                    if data is None:
                        missing[module] = why
                    objects[(carousel, module)] = {} if data is None else objects_of(data)
                return objects[(carousel, module)].get(key)

            def walk(reference, path, seen):
                found = look(reference)
                if found is None or reference in seen:
                    return
                for name, kind, entry in bindings_of(found[2]):
                    name = path + "/" + name.decode("utf-8", "replace")
                    kind = kind.rstrip(b"\0").decode()
                    target = look(entry) if entry else None
                    if target is None:
                        lines.append(f"{name} {kind} missing")
                    elif kind == "dir":
                        lines.append(f"{name} dir")
                        walk(entry, name, seen | {reference})
                    elif kind == "fil":
                        lines.append(f"{name} fil {len(target[2]) - 4} {hashlib.sha256(target[2][4:]).hexdigest()}")
                    elif kind == "ste":
                        events = ",".join(f"{event.decode()}={number}" for event, number in events_of(target[1], target[2]))
                        lines.append(f"{name} ste {events}")
                    else:
                        lines.append(f"{name} {kind}")

            walk(gateway, "", frozenset())
            yield f"PID {pid} carousel {gateway[0]}"
            if (gateway[0], gateway[1]) in objects and look(gateway) is None:
                yield "/ srg missing"
            yield from sorted(lines)
            for (download, module), _ in sorted(self.infos.items()):
                if download == gateway[0]:
                    data, why = self.module(download, module)
                    if data is None:
                        yield f"module {module} {why}"


def main():
    for path in sys.argv[1:]:
        with open(path, "rb") as file:
            stream = file.read()
        for percent in PERCENTS:
            carousels = Carousels()
            for pid, section in sections_of(stream[:len(stream) // PACKET * percent // 100 * PACKET]):
                try:
                    carousels.read(pid, section)
                except ValueError:
                    pass
            lines = list(carousels.lines())
            if lines:
                print(f"{os.path.basename(path)} {percent} %")
                for line in lines:
                    print(line)


if __name__ == "__main__":
    main()
