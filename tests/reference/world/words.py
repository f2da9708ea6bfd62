"""How values and texts stand on a transcript line, in both directions.

A value is one word: bare, or in double quotes with escapes. The quotes may also follow the first "=" of a word:
title="A b". A text is the rest of its line, with only backslash and control characters escaped. Every character of a
Python text here is one byte.
"""

import re

_BARE = re.compile(r'[^ "\\\x00-\x1f\x7f]+')
_BARE_WORD = re.compile(r'[ \t]*([^ "\\\x00-\x1f\x7f]+)(?=[ \t]|\Z)')
_UNQUOTED = re.compile(r'[^"\\]+')
_ESCAPED = re.compile(r"[\\\x00-\x1f\x7f]")
_ESCAPED_VALUE = re.compile(r'["\\\x00-\x1f\x7f]')
_NAMED = {"\\": "\\\\", "\r": "\\r", "\n": "\\n", "\t": "\\t", '"': '\\"'}
_ADDRESS = re.compile(r"\(nil\)|0x[0-9a-fA-F]+")
_CODES = {'"': '"', "\\": "\\", "r": "\r", "n": "\n", "t": "\t"}
_BLANKS = " \t"


class FormatError(Exception):
    """What is wrong with a transcript line."""


class Overrun(FormatError):
    """What an input would set off is more than a run takes: most likely a loop between the driver and its world."""


def _escape(match):
    char = match.group()
    return _NAMED.get(char) or f"\\x{ord(char):02x}"


def format_value(value):
    """The value as one word, in quotes exactly where a bare word would not do."""
    if _BARE.fullmatch(value):
        return value
    return '"' + _ESCAPED_VALUE.sub(_escape, value) + '"'


def format_text(text):
    """The text as the rest of a line."""
    return _ESCAPED.sub(_escape, text)


def format_pair(key, value):
    return f"{format_text(key)}={format_value(value)}"


def mask_addresses(text):
    """The text with every address in it as "@": the same in every run."""
    return _ADDRESS.sub("@", text)


def is_control(char):
    return ord(char) < 32 or ord(char) == 127


def trim_start(text):
    return text.lstrip(_BLANKS)


def trim_end(text):
    return text.rstrip(_BLANKS)


def _take_escape(text, at):
    """The character of the escape at the position, and where the text goes on."""
    if len(text) < at + 2:
        raise FormatError("the line ends in a backslash")
    code = text[at + 1]
    if code in _CODES:
        return _CODES[code], at + 2
    if code != "x":
        raise FormatError(f"unknown escape \\{code}")
    digits = text[at + 2 : at + 4]
    if not re.fullmatch("[0-9a-fA-F]{2}", digits):
        raise FormatError("\\x wants two hexadecimal digits")
    return chr(int(digits, 16)), at + 4


def _take_quoted(text, at):
    """The quoted section whose opening quote stands at the position, and where the text goes on."""
    out = []
    at += 1
    while at < len(text) and text[at] != '"':
        if text[at] == "\\":
            char, at = _take_escape(text, at)
            out.append(char)
        else:
            out.append(_UNQUOTED.match(text, at).group())
            at += len(out[-1])
    if at == len(text):
        raise FormatError("a quote is not closed")
    at += 1
    if at < len(text) and text[at] not in _BLANKS:
        raise FormatError("text follows a closing quote")
    return "".join(out), at


def take_word(text):
    """(word, place of its first "=" outside of quotes or -1, rest) of a text that holds more than blanks."""
    if bare := _BARE_WORD.match(text):
        return bare[1], bare[1].find("="), text[bare.end() :]
    text = trim_start(text)
    if text[0] == '"':
        word, at = _take_quoted(text, 0)
        return word, -1, text[at:]
    equals = -1
    at = 0
    while at < len(text) and text[at] not in _BLANKS:
        char = text[at]
        if char in '"\\' or is_control(char):
            raise FormatError("a value with a quote, a backslash or a control character stands in quotes")
        at += 1
        if char == "=" and equals < 0:
            equals = at - 1
            if at < len(text) and text[at] == '"':
                quoted, end = _take_quoted(text, at)
                return text[:at] + quoted, equals, text[end:]
    return text[:at], equals, text[at:]


def parse_text(text):
    """The rest of an input line: as it stands with its escapes resolved, or one quoted value."""
    text = trim_start(text)
    if text.startswith('"'):
        word, at = _take_quoted(text, 0)
        if trim_start(text[at:]):
            raise FormatError("text follows a closing quote")
        return word
    out = []
    at = 0
    while at < len(text):
        if text[at] == "\\":
            char, at = _take_escape(text, at)
        else:
            char, at = text[at], at + 1
        out.append(char)
    return "".join(out)


def _parse(text, what, pattern, least, most):
    if re.fullmatch(pattern, text) and len(text) < 100 and least <= int(text) <= most:
        return int(text)
    raise FormatError(f"{what} wants a number of 32 bits, not {format_value(text)}")


def parse_number(text, what):
    """A decimal number of 32 bits."""
    return _parse(text, what, "[0-9]+", 0, 0xFFFFFFFF)


def parse_signed_number(text, what):
    return _parse(text, what, "-?[0-9]+", -0x80000000, 0x7FFFFFFF)
