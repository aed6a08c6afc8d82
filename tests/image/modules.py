# SPDX-License-Identifier: Apache-2.0
"""The modules of blueprints, with defaults, configuration variables and globs resolved as Soong does."""
import json
import re

TOKEN = re.compile(r'\s+|//[^\n]*|("(?:[^"\\]|\\.)*"|\w+|[{}\[\],:=])')
CLOSING = {'[': ']', '{': '}'}


class SyntaxFault(ValueError):
    """The text is not a blueprint."""


def tokens_of(text):
    tokens, end = [], 0
    while end < len(text):
        found = TOKEN.match(text, end)
        if not found:
            raise SyntaxFault(f'unexpected text: {text[end:end + 20]!r}')
        end = found.end()
        tokens += [found[1]] if found[1] else []
    return tokens


def take(tokens, expected=None):
    if not tokens:
        raise SyntaxFault('unexpected end of file')
    token = tokens.pop(0)
    if expected and token != expected:
        raise SyntaxFault(f'{token}: expected {expected}')
    return token


def parse_entries(tokens, opening, parse_entry):
    """The entries up to the closing bracket; each ends with a comma, which the last may lack."""
    entries = []
    while tokens and tokens[0] != CLOSING[opening]:
        entries.append(parse_entry(tokens))
        if tokens and tokens[0] != CLOSING[opening]:
            take(tokens, ',')
    take(tokens, CLOSING[opening])
    return entries


def parse_property(tokens):
    name = take(tokens)
    take(tokens, ':')
    return name, parse_value(tokens)


def parse_value(tokens):
    token = take(tokens)
    if token == '[':
        return parse_entries(tokens, '[', parse_value)
    if token == '{':
        return dict(parse_entries(tokens, '{', parse_property))
    if token in ('true', 'false') or token[0] == '"':
        return json.loads(token)
    raise SyntaxFault(f'{token}: expected a value')


def parse(text):
    """Returns the modules, as (type, properties), and the variables of a blueprint."""
    tokens, modules, variables = tokens_of(text), [], {}
    while tokens:
        name = take(tokens)
        if take(tokens) == '=':
            variables[name] = parse_value(tokens)
        else:
            modules.append((name, dict(parse_entries(tokens, '{', parse_property))))
    return modules, variables


def merged(first, second):
    """Lists are joined; of two other values the second applies."""
    result = dict(first)
    for key, value in second.items():
        old = result.get(key)
        if isinstance(value, list) and old:
            result[key] = old + value
        elif isinstance(value, dict) and old:
            result[key] = merged(old, value)
        else:
            result[key] = value
    return result


class Modules:
    """The modules of a blueprint and of those that it includes.

    `enabled` holds the configuration variables that are true.
    """

    def __init__(self, blueprint, enabled=()):
        self.root = blueprint.parent
        self.enabled = enabled
        modules, variables = parse(blueprint.read_text())
        self.files = [blueprint, *(self.root / name for name in variables.get('build', []))]
        for file in self.files[1:]:
            modules += parse(file.read_text())[0]
        named = [(entry['name'], (kind, entry)) for kind, entry in modules if 'name' in entry]
        self.by_name = dict(named)
        if len(named) != len(self.by_name):
            raise SyntaxFault('two modules have one name')

    def __iter__(self):
        return iter(self.by_name)

    def kind(self, name):
        return self.by_name[name][0]

    def properties(self, name):
        own = dict(self.by_name[name][1])
        for variable, values in own.pop('soong_config_variables', {}).items():
            chosen = dict(values)
            otherwise = chosen.pop('conditions_default', {})
            own = merged(own, chosen if variable in self.enabled else otherwise)
        result = {}
        for defaults in own.pop('defaults', []):
            result = merged(result, self.properties(defaults))
        result.pop('name', None)
        return merged(result, own)

    def is_built(self, name):
        return self.properties(name).get('enabled', True)

    def sources(self, name):
        """Relative to the blueprint, sorted."""
        entry = self.properties(name)
        files, excluded = ({path for pattern in entry.get(key, [])
                            for path in self.root.glob(pattern)} for key in ('srcs', 'exclude_srcs'))
        return sorted(str(path.relative_to(self.root)) for path in files - excluded)

    def flags(self, name):
        """What the module adds to the flags of the phone's build."""
        entry = self.properties(name)
        return ['-std=' + entry['cpp_std'], *entry.get('cflags', []), *entry.get('cppflags', [])]

    def libraries(self, name):
        """The names of all modules that the module refers to."""
        entry = self.properties(name)
        return {library for key in ('header_libs', 'shared_libs', 'static_libs')
                for library in entry.get(key, [])}
