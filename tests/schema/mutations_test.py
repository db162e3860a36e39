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


def allowed_types(schema):
    """The types of WRONG that a key may have: a right type makes those of arrays and objects no
    better, nor the number where an integer is asked for."""
    schema = forms.resolve(schema)
    if "anyOf" in schema:
        return set().union(*map(allowed_types, schema["anyOf"]))
    if not {"const", "enum", "pattern"}.isdisjoint(schema):
        return set()
    types = schema["type"]
    return set(types if isinstance(types, list) else [types]) & {
        "null", "boolean", "number", "string"}


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


def make_incomplete(node, kept):
    """Leaves one key that an incomplete node cannot have."""
    for key in {"return", "exception", "ms_delta", "mem_delta"} - {kept}:
        node.pop(key, None)
    node["incomplete"] = True


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
        for form, key in [
                ("FUNCTION_CALL", "return"), ("FUNCTION_CALL", "exception"),
                ("INCLUDE_CALL", "exception"), ("SAPI_WRITE", "ms_delta"),
                ("SAPI_WRITE", "mem_delta"), ("STARTUP", "ms_delta"), ("STARTUP", "mem_delta")]:
            self.expect_refused(form, key, lambda it, k=key: make_incomplete(it, k), "incomplete")
        second_root = {"id": 1, "name": "STARTUP", "parent_id": 0}
        not_a_root = {"id": 0, "name": "SAPI_FLUSH", "parent_id": 0}
        for form, key, change in [
                ("STARTUP", "id", lambda it: it.update(id=1)),
                ("FUNCTION_CALL", "return", lambda it: it.update(exception=None)),
                ("FUNCTION_CALL", "args", lambda it: it.update(arg_count=0)),
                ("SAPI_HEADER", "header", lambda it: it.update(op="DELETE ALL")),
                ("SAPI_HEADER", "header", lambda it: it.update(op="SET STATUS")),
                ("document", "cp", lambda it: it["cp"].append(it["cp"][0])),
                ("document", "cp", lambda it: it["cp"].append(second_root)),
                ("document", "cp", lambda it: it["cp"].insert(0, not_a_root))]:
            self.expect_refused(form, key, change, "contradiction")

    def test_keys_that_need_others(self):
        for form, key, needed in [
                ("STARTUP", "mem_delta", "sys_mem"), ("FUNCTION_CALL", "mem_delta", "mem"),
                ("STARTUP", "ms_delta", "ts"), ("FUNCTION_CALL", "ms", "ts"),
                ("FUNCTION_CALL", "filename", "line_no"), ("FUNCTION_CALL", "line_no", "filename"),
                ("function", "filename", "line_no"), ("function", "line_no", "filename"),
                ("class", "filename", "line_no"), ("class", "line_no", "filename"),
                ("FUNCTION_CALL", "args", "args"), ("SAPI_HEADER", "header", "header"),
                ("SAPI_HEADER", "header", "op")]:
            self.expect_refused(form, key, lambda it, k=needed: it.pop(k), f"without {needed}")

    def test_limits(self):
        for form, key, values in [
                ("FUNCTION_CALL", "ts", ["1", "1.5", "1,000000", " 1.000000"]),
                ("FUNCTION_CALL", "ms", [0, -1]), ("FUNCTION_CALL", "id", [-1, 2**31]),
                ("FUNCTION_CALL", "line_no", [-2**31 - 1, 2**31]),
                ("FUNCTION_CALL", "mem", [-2**63 - 1, 2**63]),
                ("function", "line_no", [-1, 2**32]), ("string_value", "orig_sz", [0, 2**31])]:
            for value in values:
                self.expect_refused(form, key, lambda it, k=key, v=value: it.update({k: v}), value)

    def test_objects_cannot_be_anything_else(self):
        for value in WRONG.values():
            self.assertFalse(self.validator.is_valid(value), value)
            for key in ("cl", "cp", "fn"):
                self.expect_refused("document", key, lambda it, k=key, v=value: it[k].append(v), value)


if __name__ == "__main__":
    unittest.main()
