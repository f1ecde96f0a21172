"""Reads the version resource of a Windows image."""
import struct

FIXED_INFO_SIGNATURE = struct.pack("<II", 0xFEEF04BD, 0x00010000)
TRANSLATION = "Translation".encode("utf-16-le") + b"\0\0"


class NoVersion(Exception):
    pass


def read(image):
    """(version, language) of the image's bytes: ("14.0.0.0", 1033). NoVersion if there is no version resource."""
    at = image.find("VS_VERSION_INFO".encode("utf-16-le"))
    fixed = image.find(FIXED_INFO_SIGNATURE, at, at + 64) if at >= 0 else -1
    if image[:2] != b"MZ" or fixed < 0:
        raise NoVersion
    high, low = struct.unpack_from("<II", image, fixed + 8)
    translation = image.find(TRANSLATION, fixed)
    if translation < 0:
        raise NoVersion
    resource = at - 6  # three lengths precede the name
    value = resource + (translation + len(TRANSLATION) - resource + 3) // 4 * 4
    language, = struct.unpack_from("<H", image, value)
    return f"{high >> 16}.{high & 0xFFFF}.{low >> 16}.{low & 0xFFFF}", language
