"""Reads images and their debug information, as far as a symbol server needs them."""
import struct
import uuid


class BadFile(Exception):
    """The file is not what it should be."""


class Image:
    """A 64-bit image: `timestamp`, `size` of the loaded image, and the name, GUID and age of its .pdb."""

    def __init__(self, path):
        data = path.read_bytes()
        try:
            self._read(data)
        except (struct.error, IndexError, ValueError) as error:
            raise BadFile(f"{path} is damaged: {error}") from error
        except BadFile as error:
            raise BadFile(f"{path} {error}") from None

    def _read(self, data):
        header = struct.unpack_from("<I", data, 0x3C)[0] if data[:2] == b"MZ" else len(data)
        if data[header:header + 4] != b"PE\0\0":
            raise BadFile("is no image")
        sections, self.timestamp, optional_size = struct.unpack_from("<2xHI8xH", data, header + 4)
        optional = header + 24
        if struct.unpack_from("<H", data, optional)[0] != 0x20B:
            raise BadFile("is no 64-bit image")
        self.size = struct.unpack_from("<I", data, optional + 56)[0]
        self._sections = [struct.unpack_from("<8xIIII", data, optional + optional_size + 40 * i)
                          for i in range(sections)]
        debug_address, debug_size = struct.unpack_from("<II", data, optional + 112 + 8 * 6)
        for i in range(debug_size // 28):
            kind, _, _, position = struct.unpack_from("<IIII", data, self._offset(debug_address) + 28 * i + 12)
            if kind == 2 and data[position:position + 4] == b"RSDS":
                self.guid = uuid.UUID(bytes_le=data[position + 4:position + 20])
                self.age = struct.unpack_from("<I", data, position + 20)[0]
                self.pdb_name = data[position + 24:data.index(b"\0", position + 24)].decode()
                return
        raise BadFile("names no .pdb")

    def _offset(self, address):
        for virtual_size, start, raw_size, raw in self._sections:
            if start <= address < start + max(virtual_size, raw_size):
                return address - start + raw
        raise BadFile("has a directory outside its sections")

    @property
    def key(self):
        """The folder of the image on a symbol server."""
        return f"{self.timestamp:08X}{self.size:x}"

    @property
    def pdb_key(self):
        """The folder of its .pdb on a symbol server."""
        return f"{self.guid.hex.upper()}{self.age:x}"


class Pdb:
    """A .pdb: `guid`, `age` and its named streams."""

    MAGIC = b"Microsoft C/C++ MSF 7.00\r\n\x1aDS\0\0\0"
    INFO_STREAM, DBI_STREAM = 1, 3

    def __init__(self, path):
        self._data = path.read_bytes()
        try:
            self._read()
        except (struct.error, IndexError, ValueError) as error:
            raise BadFile(f"{path} is damaged: {error}") from error
        except BadFile as error:
            raise BadFile(f"{path} {error}") from None

    def _read(self):
        if not self._data.startswith(self.MAGIC):
            raise BadFile("is no .pdb")
        self._block, _, _, directory_size, _, map_block = struct.unpack_from("<6I", self._data, 32)
        blocks = self._blocks_of(directory_size)
        directory = self._join(struct.unpack_from(f"<{blocks}I", self._data, map_block * self._block), directory_size)
        count = struct.unpack_from("<I", directory)[0]
        sizes = [0 if size == 0xFFFFFFFF else size for size in struct.unpack_from(f"<{count}I", directory, 4)]
        position = 4 + 4 * count
        self._streams = []
        for size in sizes:
            blocks = self._blocks_of(size)
            self._streams.append((struct.unpack_from(f"<{blocks}I", directory, position), size))
            position += 4 * blocks
        info = self._stream(self.INFO_STREAM)
        self.guid = uuid.UUID(bytes_le=info[12:28])
        # A debugger compares the age of the image with this one, not with the one beside the GUID.
        self.age = struct.unpack_from("<I", self._stream(self.DBI_STREAM), 8)[0]
        self._names = self._read_names(info)

    def _blocks_of(self, size):
        return (size + self._block - 1) // self._block

    def _join(self, blocks, size):
        return b"".join(self._data[b * self._block:(b + 1) * self._block] for b in blocks)[:size]

    def _stream(self, number):
        return self._join(*self._streams[number])

    @staticmethod
    def _read_names(info):
        """The table of named streams: a buffer of names, then a hash table of offsets and stream numbers."""
        size = struct.unpack_from("<I", info, 28)[0]
        names = info[32:32 + size]
        position = 32 + size
        entries = struct.unpack_from("<I", info, position)[0]
        position += 8
        for _ in range(2): # the bits of used and of deleted places
            position += 4 + 4 * struct.unpack_from("<I", info, position)[0]
        found = {}
        for i in range(entries):
            offset, stream = struct.unpack_from("<II", info, position + 8 * i)
            found[names[offset:names.index(b"\0", offset)].decode()] = stream
        return found

    def named_stream(self, name):
        """The contents of a named stream, or None."""
        return self._stream(self._names[name]) if name in self._names else None
