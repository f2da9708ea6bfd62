"""Elements, how they are printed, and the reading of documents from outside.

A text is a `str` whose characters are bytes. The reader takes what the platform's takes, no more and no less,
because a command's document may be damaged in any way.
"""

import re

_ESCAPED_IN_TEXT = re.compile("[&<>\x00-\x08\x0b-\x1f]")
_ESCAPED_IN_ATTRIBUTE = re.compile('[&<>"\x00-\x1f]')
_NAMED = {"&": "&amp;", "<": "&lt;", ">": "&gt;", '"': "&quot;", "\x00": ""}


def _reference(match):
    character = match.group()
    return _NAMED[character] if character in _NAMED else "&#%d;" % ord(character)


def _escape(what, text):
    """Most texts are empty, numbers or words, which stand for themselves."""
    return text if not text or text.isalnum() else what.sub(_reference, text)


class Node:
    """One element: a name, a text, attributes in the order set, children in the order added."""

    __slots__ = ("name", "text", "attributes", "children")

    def __init__(self, name="", text=""):
        self.name = name
        self.text = text
        self.attributes = {}
        self.children = []

    def set(self, name, value):
        """Setting an attribute that is there overwrites it in its place. Returns the element itself."""
        self.attributes[name] = str(value)
        return self

    def get(self, name):
        """An attribute's value, "" when absent."""
        return self.attributes.get(name, "")

    def add(self, name, text=""):
        """Appends a new child and returns it."""
        child = Node(name, str(text))
        self.children.append(child)
        return child

    def append(self, child):
        self.children.append(child)
        return child

    def find(self, name):
        """The first child of that name, or None."""
        for child in self.children:
            if child.name == name:
                return child
        return None

    def value(self, name):
        """The text of the first child of that name, "" when absent."""
        child = self.find(name)
        return "" if child is None else child.text

    def to_text(self):
        head = self.name
        for name, value in self.attributes.items():
            head += f' {name}="{_escape(_ESCAPED_IN_ATTRIBUTE, value)}"'
        body = _escape(_ESCAPED_IN_TEXT, self.text)
        if self.children:
            body += "".join([child.to_text() for child in self.children])
        return f"<{head}>{body}</{self.name}>"


MAX_LENGTH = 16 << 20
MAX_DEPTH = 64
MAX_ELEMENTS = 1 << 20
MAX_ATTRIBUTES = 256


class _Damaged(Exception):
    pass


_START = "A-Za-z_:\x80-\xff"
_NAME = re.compile("[" + _START + "][" + _START + "0-9.-]*")
_BLANKS = re.compile("[ \t\r\n]*")
_ENTITY = re.compile("&(?:#x([0-9A-Fa-f]+)|#([0-9]+)|(amp|apos|gt|lt|quot));")
_ENTITIES = {"amp": "&", "apos": "'", "gt": ">", "lt": "<", "quot": '"'}


def _utf8(code):
    """The bytes of a code point, also of one that Unicode does not have."""
    code &= 0xFFFFFFFF
    if code < 0x80:
        codes = [code]
    elif code < 0x800:
        codes = [0xC0 | code >> 6, 0x80 | code & 0x3F]
    elif code < 0x10000:
        codes = [0xE0 | code >> 12, 0x80 | code >> 6 & 0x3F, 0x80 | code & 0x3F]
    else:
        codes = [0xF0 | code >> 18, 0x80 | code >> 12 & 0x3F, 0x80 | code >> 6 & 0x3F, 0x80 | code & 0x3F]
    return "".join(chr(byte & 0xFF) for byte in codes)


def _entity(match):
    hexadecimal, decimal, name = match.groups()
    if hexadecimal is not None:
        return _utf8(int(hexadecimal[-8:], 16))
    if decimal is not None:
        code = 0
        for digit in decimal:
            code = (code * 10 + int(digit)) & 0xFFFFFFFF
        return _utf8(code)
    return _ENTITIES[name]


def _expand(text):
    """References resolved; a zero byte made by one ends the text."""
    if "&" in text:
        text = _ENTITY.sub(_entity, text)
    return text.partition("\x00")[0]


def _line_ends(text):
    return text.replace("\r\n", "\n").replace("\r", "\n")


class _Element:
    """An element that is being read: its node, and what stands in it so far."""

    def __init__(self, name):
        self.node = Node(name)
        self.texts = []
        self.attribute_count = 0

    def is_empty(self):
        return not self.texts and not self.node.children


class _Reader:
    def __init__(self, text):
        self.text = text
        self.at = 0
        self.root = _Element("")  # stands for the document itself
        self.open = [self.root]

    def read(self):
        text = self.text
        while self.at < len(text):
            if text[self.at] != "<":
                self.read_text()
            else:
                self.at += 1
                self.read_tag()
        if len(self.open) != 1:
            raise _Damaged
        if self.root.texts or len(self.root.node.children) != 1:
            raise _Damaged
        return self.root.node.children[0]

    def read_text(self):
        end = self.text.find("<", self.at)
        if end < 0:
            end = len(self.text)
        raw = self.text[self.at:end]
        self.at = end
        # Blanks alone are a text only when they are all that an element holds.
        if raw.strip(" \t\r\n") == "" and not (
            self.text.startswith("</", end) and self.open[-1].is_empty()
        ):
            return
        self.open[-1].texts.append(_expand(_line_ends(raw)))

    def read_tag(self):
        text = self.text
        follows = text[self.at:self.at + 1]
        if follows == "/":
            self.read_end()
        elif follows == "?":
            self.read_instruction()
        elif text.startswith("!--", self.at):
            self.skip_to("-->", self.at + 3)
        elif text.startswith("![CDATA[", self.at):
            begin = self.at + 8
            self.skip_to("]]>", begin)
            self.open[-1].texts.append(_line_ends(text[begin:self.at - 3]))
        elif text.startswith("!DOCTYPE", self.at):
            self.read_doctype()
        else:
            self.read_start()

    def name(self):
        match = _NAME.match(self.text, self.at)
        if match is None:
            raise _Damaged
        self.at = match.end()
        return match.group()

    def blanks(self):
        self.at = _BLANKS.match(self.text, self.at).end()

    def skip_to(self, end, begin):
        found = self.text.find(end, begin)
        if found < 0:
            raise _Damaged
        self.at = found + len(end)

    def read_start(self):
        element = _Element(self.name())
        self.open[-1].node.children.append(element.node)
        self.open.append(element)
        if self.text[self.at:self.at + 1] not in (">", "/", " ", "\t", "\r", "\n"):
            raise _Damaged
        while True:
            self.blanks()
            if self.text.startswith(">", self.at):
                self.at += 1
                return
            if self.text.startswith("/>", self.at):
                self.at += 2
                self.close()
                return
            self.read_attribute(element)

    def read_attribute(self, element):
        name = self.name()
        self.blanks()
        if not self.text.startswith("=", self.at):
            raise _Damaged
        self.at += 1
        self.blanks()
        quote = self.text[self.at:self.at + 1]
        if quote not in ('"', "'"):
            raise _Damaged
        begin = self.at + 1
        self.skip_to(quote, begin)
        raw = self.text[begin:self.at - 1]
        if _NAME.match(self.text, self.at):
            raise _Damaged
        for blank in ("\r\n", "\r", "\n", "\t"):
            raw = raw.replace(blank, " ")
        element.attribute_count += 1
        element.node.attributes[name] = _expand(raw)

    def read_end(self):
        self.at += 1
        name = self.open[-1].node.name
        if len(self.open) == 1 or not self.text.startswith(name, self.at):
            raise _Damaged
        self.at += len(name)
        self.blanks()
        if not self.text.startswith(">", self.at):
            raise _Damaged
        self.at += 1
        self.close()

    def close(self):
        element = self.open.pop()
        element.node.text = "".join(element.texts)
        if element.attribute_count > MAX_ATTRIBUTES:
            raise _Damaged

    def read_instruction(self):
        self.at += 1
        self.name()
        self.skip_to("?>", self.at)

    def read_doctype(self):
        """Skips a document type, which may stand beside the root only."""
        if len(self.open) != 1:
            raise _Damaged
        depth = 0
        text = self.text
        self.at += 1  # after "<!"
        while self.at < len(text):
            if text.startswith("<![", self.at):
                self.skip_ignored()
            elif text.startswith("<!--", self.at):
                self.skip_to("-->", self.at + 4)
            elif text.startswith("<!", self.at) and not text.startswith("<!-", self.at):
                self.at += 2
                depth += 1
            elif text.startswith("<?", self.at):
                self.skip_to("?>", self.at + 2)
            elif text[self.at] in "\"'":
                self.skip_to(text[self.at], self.at + 1)
            elif text[self.at] == "<":
                raise _Damaged
            elif text[self.at] == ">":
                self.at += 1
                if depth == 0:
                    return
                depth -= 1
            else:
                self.at += 1
        raise _Damaged

    def skip_ignored(self):
        depth = 0
        self.at += 3
        while self.at < len(self.text):
            if self.text.startswith("<![", self.at):
                self.at += 3
                depth += 1
            elif self.text.startswith("]]>", self.at):
                self.at += 3
                if depth == 0:
                    return
                depth -= 1
            else:
                self.at += 1
        raise _Damaged


def _within_limits(root):
    elements = 0
    level = [root]
    depth = 0
    while level:
        depth += 1
        elements += len(level)
        if depth > MAX_DEPTH or elements > MAX_ELEMENTS:
            return False
        level = [child for node in level for child in node.children]
    return True


def parse_document(text):
    """The root element; None for a text that is no document."""
    if len(text) > MAX_LENGTH:
        return None
    text = text.partition("\x00")[0]
    if text.startswith("\xef\xbb\xbf"):
        text = text[3:]
    try:
        root = _Reader(text).read()
    except _Damaged:
        return None
    return root if _within_limits(root) else None
