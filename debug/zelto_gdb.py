"""GDB's views of DataObject, DataValue, UtcTime and Version.

Loaded by itself with an installed package; by hand: (gdb) source debug/zelto_gdb.py
Documents need the debug information of the library (a build of type Debug or RelWithDebInfo).
"""
import datetime

import gdb
import gdb.printing

# DataValue::EType, and DataValue::Form.
STRING, BOOLEAN, INTEGER, OBJECT, NULL = 0, 1, 2, 4, 5
EMPTY, TEXT, TEXT_LIST, ONE_OBJECT, PARTS = range(5)
LONG_TEXT = 0x8000  # of a list of texts: the length has two units

TICKS_PER_SECOND = 10_000_000


class Text:
    """A text, cut as GDB's setting "print elements" says."""

    def __init__(self, pointer, length):
        limit = gdb.parameter('print elements') or int(length)
        self.is_cut = int(length) > limit
        length = min(int(length), limit)
        self.text = pointer.string(length=length, errors='replace') if length else ''

    def quoted(self):
        text = self.text.replace('\\', '\\\\').replace('"', '\\"')
        return f'"{text}"' + ('...' if self.is_cut else '')

    def bare(self):
        return self.text + ('...' if self.is_cut else '')


def wide_string(value):
    return Text(value['_M_dataplus']['_M_p'], value['_M_string_length'])


def elements(vector):
    at, end = vector['_M_impl']['_M_start'], vector['_M_impl']['_M_finish']
    while at != end:
        yield at.dereference()
        at += 1


def tree_values(tree, value_type):
    """The values of a std::set, in order."""
    header = tree['_M_t']['_M_impl']['_M_header'].address
    node = header['_M_left']
    while node != header:
        yield (node + 1).cast(value_type.pointer()).dereference()
        if node['_M_right']:
            node = node['_M_right']
            while node['_M_left']:
                node = node['_M_left']
        else:
            parent = node['_M_parent']
            while node == parent['_M_right']:
                node, parent = parent, parent['_M_parent']
            node = parent if node['_M_right'] != parent else node


def nodes_of(data_object):
    """The PropertyNodes of a DataObject in the order of their keys."""
    storage = data_object['storage_']
    if not storage:
        return
    node_type = gdb.lookup_type('Zelto::Json::PropertyNode')
    if storage['index_']:
        for pointer in tree_values(storage['index_'].dereference(), node_type.pointer()):
            yield pointer.dereference()
    else:
        first = (storage + 1).cast(node_type.pointer())
        for i in range(int(storage['count_'])):
            yield (first + i).dereference()


class DataObjectPrinter:
    def __init__(self, value):
        self.value = value

    def display_hint(self):
        return 'map'

    def to_string(self):
        storage = self.value['storage_']
        if not storage:
            return 'object, empty'
        if not storage.dereference().type.strip_typedefs().fields():
            return 'object, whose library has no debug information'
        return 'object'

    def children(self):
        if not self.value['storage_'] or not self.value['storage_'].dereference().type.strip_typedefs().fields():
            return
        unit = gdb.lookup_type('char16_t').pointer()
        for i, node in enumerate(nodes_of(self.value)):
            key = (node.address.cast(gdb.lookup_type('char').pointer()) + node['key_offset']).cast(unit)
            yield f'[{2 * i}]', Text(key, node['key_length']).quoted()
            yield f'[{2 * i + 1}]', node['value']


class DataValuePrinter:
    def __init__(self, value):
        self.value = value
        self.kind = int(value['kind_'])
        self.form = int(value['form_'])
        self.is_array = bool(value['is_array_'])
        self.nested = None if self.is_array else self._first_object()

    def _parts(self):
        return self.value['units_']['parts']['_M_b']['_M_p'].dereference()

    def _texts(self):
        if self.form == PARTS:
            return [wide_string(text) for text in elements(self._parts()['strings'])]
        if self.form not in (TEXT, TEXT_LIST):
            return []
        units, end = self.value['units_']['text'], int(self.value['length_'])
        if self.form == TEXT:
            return [Text(units, end)]
        texts, at = [], 0
        while at < end:
            length = int(units[at])
            at += 1
            if length >= LONG_TEXT:
                length = (length - LONG_TEXT) << 16 | int(units[at])
                at += 1
            texts.append(Text(units + at, length))
            at += length
        return texts

    def _objects(self):
        if self.form == ONE_OBJECT:
            pointers = [self.value['object_']]
        elif self.form == PARTS:
            pointers = elements(self._parts()['objects'])
        else:
            pointers = []
        return [pointer['_M_ptr'] for pointer in pointers]

    def _first_object(self):
        objects = self._objects() if self.kind == OBJECT else []
        return DataObjectPrinter(objects[0].dereference()) if objects and objects[0] else None

    def _written(self, text):
        return text.quoted() if self.kind == STRING else text.bare()

    def display_hint(self):
        if self.nested:
            return 'map'
        return 'array' if self.is_array else None

    def to_string(self):
        if self.is_array:
            return 'array'
        if self.nested:
            return self.nested.to_string()
        if self.kind == OBJECT:
            return 'no object'
        texts = self._texts()
        return 'null' if self.kind == NULL or not texts else self._written(texts[0])

    def children(self):
        if self.nested:
            yield from self.nested.children()
        elif self.is_array:
            if self.kind == OBJECT:
                items = [pointer.dereference() if pointer else 'no object' for pointer in self._objects()]
            else:
                items = map(self._written, self._texts())
            for i, item in enumerate(items):
                yield f'[{i}]', item


class UtcTimePrinter:
    def __init__(self, value):
        self.ticks = int(value['ticks_'])

    def to_string(self):
        if self.ticks == 0:
            return 'empty'
        try:
            time = datetime.datetime(1601, 1, 1) + datetime.timedelta(seconds=self.ticks // TICKS_PER_SECOND)
        except OverflowError:
            return f'{self.ticks} ticks'
        return f'{time.isoformat()}.{self.ticks % TICKS_PER_SECOND:07}Z'


class VersionPrinter:
    def __init__(self, value):
        self.parts = value['parts_']['_M_elems']

    def to_string(self):
        return '.'.join(str(int(self.parts[i])) for i in range(4))


def printers():
    collection = gdb.printing.RegexpCollectionPrettyPrinter('Zelto')
    collection.add_printer('DataObject', '^Zelto::Json::DataObject$', DataObjectPrinter)
    collection.add_printer('DataValue', '^Zelto::Json::DataValue$', DataValuePrinter)
    collection.add_printer('UtcTime', '^Zelto::Utilities::UtcTime$', UtcTimePrinter)
    collection.add_printer('Version', '^Zelto::Utilities::Version$', VersionPrinter)
    return collection


gdb.printing.register_pretty_printer(gdb.current_objfile(), printers(), replace=True)
