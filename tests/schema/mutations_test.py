# SPDX-License-Identifier: MIT
"""A document with anything wrong does not keep to the schema: each key of each kind of object is made
wrong in every way, in a document that the tool printed."""
import copy
import unittest

import documents
import forms
from jsonschema import Draft202012Validator

# Of each JSON type a value that no key takes when its type is wrong.
WRONG = {"null": None, "boolean": False, "number": -0.5, "string": "?", "array": [{"?": 0}],
         "object": {"?": {"?": 0}}}
JSON_TYPES = {type(None): "null", bool: "boolean", int: "number", float: "number", str: "string"}


def allowed_types(schema):
    """The JSON types that a key may have, its objects left out: those are never the wrong one."""
    schema = forms.resolve(schema)
    if "anyOf" in schema:
        return set().union(*map(allowed_types, schema["anyOf"]))
    if "const" in schema:
        return set()
    if "enum" in schema or "pattern" in schema or schema.get("type") == "integer":
        return set()
    types = schema["type"]
    return set(types if isinstance(types, list) else [types]) - {"object", "array"}


def wrong_values(schema):
    for name, value in WRONG.items():
        if name not in allowed_types(schema):
            yield value
    merged = forms.resolve(schema)
    if "minimum" in merged:
        yield from (merged["minimum"] - 1, merged["maximum"] + 1)
    if "exclusiveMinimum" in merged:
        yield merged["exclusiveMinimum"]


def small_documents():
    """Documents of one node beside the request, each of another shape."""
    outline = documents.Outline()
    sources = [*documents.golden_cases(), *documents.traces("examples", "*.ct")]
    for _, document in sources:
        document = outline.of(document)
        yield {**document, "cp": document["cp"][:1]}
        for node in document["cp"][1:]:
            yield {"cl": [], "cp": [document["cp"][0], node], "fn": []}


def at(document, path):
    for step in path:
        document = document[step]
    return document


class Mutations(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.validator = Draft202012Validator(documents.SCHEMA)
        # For each form and key a document and the place of an object in it that has the key.
        cls.samples = {}
        for document in small_documents():
            for form, path in forms.objects_in(document):
                for key in at(document, path):
                    cls.samples.setdefault((form, key), (document, path))

    def test_every_key_has_a_sample(self):
        known = {(form, key) for form in forms.FORMS for key in forms.keys_of(form)}
        self.assertEqual(known, set(self.samples))

    def expect_refused(self, form, key, change, what):
        document, path = self.samples[form, key]
        document = copy.deepcopy(document)
        change(at(document, path))
        self.assertFalse(self.validator.is_valid(document), f"{form}.{key}: {what}")

    def test_samples_are_valid(self):
        for document, _ in self.samples.values():
            self.validator.validate(document)

    def test_wrong_values(self):
        for form, key in self.samples:
            for value in wrong_values(forms.FORMS[form]["properties"][key]):
                self.expect_refused(form, key, lambda it, k=key, v=value: it.update({k: v}), value)

    def test_missing_keys(self):
        for form, key in self.samples:
            missing = set(forms.FORMS[form].get("dependentRequired", {}).get(key, []))
            # A resource without its type looks like an object of unknown class.
            if key in forms.FORMS[form]["required"] and (form, key) != ("resource_value", "resource"):
                missing.add(key)
            for other in missing:
                self.expect_refused(form, key, lambda it, k=other: it.pop(k), f"without {other}")

    def test_keys_of_other_objects(self):
        values = {"unknown": 0}
        for (_, key), (document, path) in self.samples.items():
            values[key] = at(document, path)[key]
        for form in forms.FORMS:
            own = forms.keys_of(form)
            for key in values.keys() - own:
                self.expect_refused(form, own[-1], lambda it, k=key: it.update({k: values[k]}),
                                    f"with {key}")

    def test_contradictions(self):
        ended = [("FUNCTION_CALL", "return"), ("FUNCTION_CALL", "exception"),
                 ("INCLUDE_CALL", "exception"), ("SAPI_WRITE", "ms_delta"),
                 ("SAPI_WRITE", "mem_delta"), ("STARTUP", "ms_delta"), ("STARTUP", "mem_delta")]
        for form, key in ended:
            self.expect_refused(form, key, lambda it: it.update(incomplete=True), "incomplete")
        for form, key, change in [
                ("FUNCTION_CALL", "return", lambda it: it.update(exception=None)),
                ("FUNCTION_CALL", "args", lambda it: it.update(arg_count=0)),
                ("FUNCTION_CALL", "args", lambda it: it.pop("args")),
                ("SAPI_HEADER", "header", lambda it: it.update(op="DELETE ALL")),
                ("SAPI_HEADER", "header", lambda it: it.update(op="SET STATUS")),
                ("SAPI_HEADER", "header", lambda it: it.pop("header")),
                ("SAPI_HEADER", "header", lambda it: it.pop("op")),
                ("document", "cp", lambda it: it["cp"].append(it["cp"][0])),
                ("document", "cp", lambda it: it["cp"].insert(0, {
                    "id": 1, "name": "SAPI_FLUSH", "parent_id": 0}))]:
            self.expect_refused(form, key, change, "contradiction")


if __name__ == "__main__":
    unittest.main()
