"""The verbs of input lines: a function each, which takes the session and the words behind the verb."""


class Verbs(dict):
    def of(self, name):
        def register(function):
            self[name] = function
            return function

        return register
