# Run by GDB: the library's views of values in a running program.
import os
import re
import xml.etree.ElementTree

import gdb

SOURCE = os.environ['ZELTO_SOURCE_DIR']

EXPECTED = {
    'version': '4.12.0.2201',
    'time': '2017-11-08T15:44:56.0000000Z',
    'no_time': 'empty',
    'far': '18446744073709551615 ticks',
    'none': 'object, empty',
    '*read._M_ptr': 'object = {["empty"] = "", '
                    '["inner"] = object = {["deep"] = object = {["k"] = "v"}}, '
                    '["list"] = array = {object = {["n"] = 1}, object = {["n"] = 2}}, '
                    '["name"] = "Zo\u00eb \\"x\\"", ["on"] = true, ["port"] = 4812, '
                    '["sizes"] = array = {1, 22}, ["tags"] = array = {"a", "b"}, ["zero"] = null}',
    'grown': 'object = {["a"] = "a", ["c"] = "c", ["deep"] = object = {["k"] = "v"}, ["m"] = "m", ["s"] = "s", '
             '["x"] = "x"}',
    'materialised': 'array = {"' + 'y' * 200 + '"..., "short"}',
}


def fields_of(name):
    return {part for field in gdb.lookup_type(name).fields() for part in
            ([field.name] if field.name else [inner.name for inner in field.type.fields()])}


def failures():
    for expression, expected in EXPECTED.items():
        seen = gdb.parse_and_eval(expression).format_string()
        if seen != expected:
            yield f'{expression}\n  is shown as {seen}\n  instead of  {expected}'

    # Visual Studio's views cannot be run here, but must be well-formed and name members that there are.
    members = set().union(*map(fields_of, [
        'Zelto::Json::DataObject', 'Zelto::Json::ObjectStorage', 'Zelto::Json::PropertyNode', 'Zelto::Json::DataValue',
        'Zelto::Json::DataValue::Parts', 'Zelto::Utilities::UtcTime', 'Zelto::Utilities::Version']))
    views = xml.etree.ElementTree.parse(f'{SOURCE}/debug/zelto.natvis')
    words = ' '.join(piece for element in views.iter() for piece in [element.text or '', *element.attrib.values()])
    for name in sorted(set(re.findall(r'\b[a-z]\w*_\b', words)) - members):
        yield f'zelto.natvis names {name}, which no type has'


def main():
    gdb.execute('set print pretty off')
    gdb.execute('set host-charset UTF-8')
    gdb.execute(f'source {SOURCE}/debug/zelto_gdb.py')
    gdb.execute('break Look', to_string=True)
    gdb.execute('run', to_string=True)
    gdb.execute('up', to_string=True)
    found = list(failures())
    print('\n'.join(found))
    gdb.execute('kill', to_string=True)
    return 1 if found else 0


try:
    result = main()
except gdb.error as error:
    print(error)
    result = 1
gdb.execute(f'quit {result}')
