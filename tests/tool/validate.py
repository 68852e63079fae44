"""Checks a JSON file against a JSON schema, of which it knows the keywords that this project uses.

Usage: validate.py SCHEMA FILE | validate.py --self-test
"""

import json
import re
import sys

TYPES = {"object": dict, "array": list, "string": str, "boolean": bool, "integer": int, "number": (int, float)}
KNOWN = {"$schema", "$id", "title", "description", "$defs", "$ref", "type", "const", "enum", "properties", "required",
         "additionalProperties", "propertyNames", "pattern", "items", "minItems", "maxItems", "minimum", "anyOf"}


def is_type(value, name):
    return isinstance(value, TYPES[name]) and (name == "boolean" or not isinstance(value, bool))


def faults_of_object(value, schema, root, path):
    for name in schema.get("required", []):
        if name not in value:
            yield f"{path}: {name} is missing"
    properties = schema.get("properties", {})
    others = schema.get("additionalProperties", True)
    for name, member in value.items():
        yield from faults(name, schema.get("propertyNames", {}), root, f"{path}, the name {name}")
        if name in properties:
            yield from faults(member, properties[name], root, f"{path}.{name}")
        elif others is False:
            yield f"{path}: {name} is not known"
        elif others is not True:
            yield from faults(member, others, root, f"{path}.{name}")


def faults_of_array(value, schema, root, path):
    if not schema.get("minItems", 0) <= len(value) <= schema.get("maxItems", len(value)):
        yield f"{path}: has {len(value)} items"
    for i, item in enumerate(value):
        yield from faults(item, schema.get("items", {}), root, f"{path}[{i}]")


def faults(value, schema, root, path="$"):
    unknown = set(schema) - KNOWN
    if unknown:
        yield f"the schema uses {sorted(unknown)}, which this script does not know"
    if "$ref" in schema:
        yield from faults(value, root["$defs"][schema["$ref"].rpartition("/")[2]], root, path)
    if "type" in schema and not is_type(value, schema["type"]):
        yield f"{path}: {value!r} is no {schema['type']}"
        return
    if "const" in schema and value != schema["const"]:
        yield f"{path}: {value!r} is not {schema['const']!r}"
    if "enum" in schema and value not in schema["enum"]:
        yield f"{path}: {value!r} is not one of {schema['enum']}"
    if "pattern" in schema and not re.search(schema["pattern"], value):
        yield f"{path}: {value!r} does not match {schema['pattern']}"
    if "minimum" in schema and value < schema["minimum"]:
        yield f"{path}: {value} is below {schema['minimum']}"
    if "anyOf" in schema and all(list(faults(value, option, root, path)) for option in schema["anyOf"]):
        yield f"{path}: {value!r} matches none of the alternatives"
    if isinstance(value, dict):
        yield from faults_of_object(value, schema, root, path)
    if isinstance(value, list):
        yield from faults_of_array(value, schema, root, path)


def self_test():
    schema = {"type": "object", "required": ["a"], "additionalProperties": False, "$defs": {"d": {"const": 1}},
              "properties": {"a": {"type": "integer", "minimum": 0}, "b": {"enum": ["x"]}, "c": {"$ref": "#/$defs/d"},
                             "e": {"type": "array", "minItems": 1, "maxItems": 2, "items": {"type": "string", "pattern": "^x"}},
                             "f": {"anyOf": [{"type": "number"}, {"const": "nan"}]},
                             "g": {"type": "object", "propertyNames": {"pattern": "^[a-z]+$"},
                                   "additionalProperties": {"type": "integer"}}}}
    right = [{"a": 0, "b": "x", "c": 1, "e": ["x1"], "f": 0.5, "g": {"k": 1}}, {"a": 7, "f": "nan"}]
    wrong = [{}, [], {"a": -1}, {"a": True}, {"a": 0, "b": "y"}, {"a": 0, "c": 2}, {"a": 0, "e": []}, {"a": 0, "e": ["y"]},
             {"a": 0, "e": ["x"] * 3}, {"a": 0, "f": "x"}, {"a": 0, "g": {"K": 1}}, {"a": 0, "g": {"k": "1"}}, {"a": 0, "z": 1}]
    return [f"accepted: {value}" for value in wrong if not list(faults(value, schema, schema))] + \
           [f"rejected: {value}" for value in right if list(faults(value, schema, schema))]


def main():
    if sys.argv[1] == "--self-test":
        found = self_test()
    else:
        schema, value = (json.load(open(path, encoding="utf-8")) for path in sys.argv[1:3])
        found = list(faults(value, schema, schema))
    print("\n".join(found))
    return bool(found)


sys.exit(main())
