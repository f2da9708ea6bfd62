"""Named commands and events with named, typed parameters."""

from nodes import Node
from text import to_ulong

# More parameters can only come from a damaged command.
MAX_PARAMS = 1024


class Message:
    def __init__(self, name):
        self.name = name
        self.params = []  # [(name, type, value)] in order

    def add(self, name, type_name, value):
        """A parameter that is there already is overwritten in its place. Returns the message itself."""
        for index, param in enumerate(self.params):
            if param[0] == name:
                self.params[index] = (name, type_name, value)
                return self
        self.params.append((name, type_name, value))
        return self

    def has(self, name):
        return any(param[0] == name for param in self.params)

    def get(self, name):
        """The parameter's text, "" when absent."""
        for param in self.params:
            if param[0] == name:
                return param[2]
        return ""

    def number(self, name):
        return to_ulong(self.get(name))


def message_to_xml(message):
    element = Node("command").set("name", message.name)
    for name, type_name, value in message.params:
        element.add("param", value).set("name", name).set("type", type_name)
    return element


def message_from_xml(element):
    """None when the element is not a command."""
    name = element.get("name")
    if element.name != "command" or name == "" or len(element.children) > MAX_PARAMS:
        return None
    message = Message(name)
    for child in element.children:
        if child.name == "param":
            message.add(child.get("name"), child.get("type"), child.text)
    return message
