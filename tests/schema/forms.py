# SPDX-License-Identifier: MIT
"""What the schema says of each of its objects: keys, required keys, keys that need others."""
from documents import SCHEMA

ROOT_FORM = "document"


def resolve(schema):
    """The schema with what it refers to merged in; own keywords win."""
    merged = {}
    for base in [{"$ref": schema["$ref"]}] if "$ref" in schema else schema.get("allOf", []):
        target = resolve(SCHEMA["$defs"][base["$ref"].rpartition("/")[2]])
        for keyword, content in target.items():
            _merge(merged, keyword, content)
    for keyword, content in schema.items():
        if keyword not in ("$ref", "allOf", "$defs"):
            _merge(merged, keyword, content)
    return merged


def _merge(merged, keyword, content):
    if keyword == "required":
        merged[keyword] = sorted({*merged.get(keyword, []), *content})
    elif keyword in ("properties", "dependentRequired"):
        merged[keyword] = {**merged.get(keyword, {}), **content}
    else:
        merged[keyword] = content


def _is_closed(schema):
    return False in (schema.get("additionalProperties"), schema.get("unevaluatedProperties"))


def all_forms():
    """Each kind of object that a document holds: name and merged schema."""
    forms = {ROOT_FORM: resolve(SCHEMA)}
    forms.update((name, resolve(schema)) for name, schema in SCHEMA["$defs"].items()
                 if _is_closed(schema))
    return forms


FORMS = all_forms()


def keys_of(form):
    return [key for key, schema in FORMS[form]["properties"].items() if schema is not False]


def _form_of_value(value):
    if not isinstance(value, dict):
        return None
    for form in ("string_value", "array_value", "resource_value", "object_value"):
        if FORMS[form]["required"][-1] in value:
            return form
    raise AssertionError(f"no value: {value}")


def _values_in(value, path):
    form = _form_of_value(value)
    if form is None:
        return
    yield form, path
    if form == "array_value":
        content = value["array"]
        pairs = content.items() if isinstance(content, dict) else enumerate(content)
        for key, part in pairs:
            yield from _values_in(part, (*path, "array", key))


def objects_in(document):
    """Each object of a document: its form and the path to it."""
    yield ROOT_FORM, ()
    for index, _ in enumerate(document["cl"]):
        yield "class", ("cl", index)
    for index, _ in enumerate(document["fn"]):
        yield "function", ("fn", index)
    for index, node in enumerate(document["cp"]):
        yield node["name"], ("cp", index)
        for key in ("this", "return", "exception", "body", "header"):
            yield from _values_in(node.get(key), ("cp", index, key))
        for position, value in enumerate(node.get("args", [])):
            yield from _values_in(value, ("cp", index, "args", position))
