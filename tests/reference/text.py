"""Texts and numbers as the driver's machine has them: bytes, and 32 bits everywhere."""

import base64
import re

TRUE_STRING = "true"
FALSE_STRING = "false"

_NUMBER = re.compile(r"[ \t\n\v\f\r]*([+-]?)([0-9]+)")
_UPPER = {ord(letter): letter.lower() for letter in "ABCDEFGHIJKLMNOPQRSTUVWXYZ"}


def u32(number):
    """Wraps to 32 bits, unsigned."""
    return number & 0xFFFFFFFF


def i32(number):
    """Wraps to 32 bits, signed."""
    number &= 0xFFFFFFFF
    return number - 0x100000000 if number >= 0x80000000 else number


def to_long(text):
    """The way of strtol, base 10, saturating at 32 bits; 0 without digits."""
    match = _NUMBER.match(text)
    if match is None:
        return 0
    sign, digits = match.groups()
    value = int(digits.lstrip("0")[:11] or "0")  # eleven digits are past every limit already
    return max(-value, -0x80000000) if sign == "-" else min(value, 0x7FFFFFFF)


def to_ulong(text):
    """The same number as an unsigned one."""
    return u32(to_long(text))


def to_text(flag):
    return TRUE_STRING if flag else FALSE_STRING


def lower(text):
    """Letters of ASCII only: other bytes are no letters."""
    return text.translate(_UPPER)


def is_true(text):
    return lower(text) == TRUE_STRING


def base64_encode(text):
    return base64.b64encode(text.encode("latin-1")).decode("ascii")
