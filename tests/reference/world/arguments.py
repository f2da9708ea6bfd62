"""The words after an input line's verb, taken from left to right."""

from world.words import FormatError, format_value, parse_number, parse_signed_number, parse_text, take_word, trim_start


def parse_number_list(text, what):
    """ "1,2,3"; an empty text is an empty list."""
    return [parse_number(piece, what) for piece in text.split(",")] if text else []


class Arguments:
    """Every operation raises FormatError for what it cannot take; `what` names the wanted word."""

    def __init__(self, line):
        self._rest = line

    def at_end(self):
        return not trim_start(self._rest)

    def value(self, what):
        if self.at_end():
            raise FormatError(f"{what} is missing")
        word, _, self._rest = take_word(self._rest)
        return word

    def number(self, what):
        return parse_number(self.value(what), what)

    def signed_number(self, what):
        return parse_signed_number(self.value(what), what)

    def number_list(self, what):
        return parse_number_list(self.value(what), what)

    def text(self):
        """All that is left, as one text."""
        rest, self._rest = self._rest, ""
        return parse_text(rest)

    def rest(self):
        """All that is left, as it stands."""
        rest, self._rest = self._rest, ""
        return trim_start(rest)

    def pairs(self):
        """All that is left, as [(key, value)]."""
        pairs = []
        while not self.at_end():
            word, equals, self._rest = take_word(self._rest)
            if equals <= 0:
                raise FormatError(f"wants key=value, not {format_value(word)}")
            pairs.append((word[:equals], word[equals + 1 :]))
        return pairs

    def fields(self, *known):
        """All that is left, as key=value words with these keys, each at most once."""
        pairs = self.pairs()
        for at, (key, _) in enumerate(pairs):
            if key not in known:
                raise FormatError(f"unknown key {format_value(key)}")
            if any(earlier == key for earlier, _ in pairs[:at]):
                raise FormatError(f"the key {key} comes twice")
        return Fields(dict(pairs))

    def expect_end(self):
        if not self.at_end():
            raise FormatError(f"too many words: {trim_start(self._rest)}")


class Fields:
    """The key=value words of a verb with a fixed set of keys; an absent one is "", 0 or empty."""

    def __init__(self, values):
        self._values = values

    def text(self, key):
        return self._values.get(key, "")

    def number(self, key):
        return parse_number(self._values[key], key) if key in self._values else 0

    def number_list(self, key):
        return parse_number_list(self.text(key), key)
