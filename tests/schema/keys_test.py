# SPDX-License-Identifier: MIT
"""The schema, the sources and docs/outputs.md know the same keys."""
import re
import unittest

import forms
from documents import ROOT, SCHEMA


def printed_keys():
    sources = ROOT / "src/libs/codetrace"
    names = (sources / "tree/ct_fields.h").read_text()
    table = re.search(r"field_names = .*?rows\[\] = \{(.*?)\n  \};", names, re.S)
    keys = set(re.findall(r'"(\w+)"', table[1]))
    for source in sources.glob("render/**/*.cpp"):
        keys.update(re.findall(r'(?:key\(|write_entities\(json, )"(\w+)"', source.read_text()))
    return keys


def documented():
    """Of docs/outputs.md: for each form (None: of every node) its keys and when they are present."""
    section = (ROOT / "docs/outputs.md").read_text().partition("\n## JSON\n")[2].partition("\n## ")[0]
    result, form, columns = {}, None, []
    for line in section.splitlines():
        cells = [cell.strip() for cell in line.strip("|").split("|")]
        if "Present" in cells:
            columns, form = cells, None
        elif line.startswith("| "):
            row = dict(zip(columns, cells))
            owner = row.get("Node") or row.get("In")
            names = {"`fn`, `cl`": "function class", "`fn`": "function"}
            form = names.get(owner, owner) or form
            for key in re.findall(r"`(\w+)`", row["Key"]):
                for each in form.split() if form else [None]:
                    result.setdefault(each, {})[key] = row["Present"]
    return result


class Keys(unittest.TestCase):
    def test_each_is_described(self):
        for form in forms.FORMS:
            for key in forms.keys_of(form):
                self.assertRegex(forms.FORMS[form]["properties"][key].get("description", ""),
                                 r"^\S.*\.$", f"{form}.{key}")

    def test_printed_ones_are_in_the_schema(self):
        known = {key for form in forms.FORMS for key in forms.keys_of(form)}
        self.assertEqual(printed_keys(), known)

    def test_document_lists_each_kind_of_node(self):
        listed = {each["$ref"].rpartition("/")[2]
                  for each in SCHEMA["properties"]["cp"]["items"]["anyOf"]}
        names = {form for form in forms.FORMS if form.isupper()}
        self.assertEqual(listed, names - {"STARTUP"})
        for form in names:
            self.assertEqual(forms.FORMS[form]["properties"]["name"].get("const"), form)

    def test_required_keys_of_the_document_and_of_values(self):
        for form, required in [
                (forms.ROOT_FORM, ["cl", "cp", "fn"]), ("string_value", ["string"]),
                ("array_value", ["array"]), ("object_value", ["handle"]),
                ("resource_value", ["handle", "resource"])]:
            self.assertEqual(forms.FORMS[form]["required"], required, form)

    def test_documentation_agrees(self):
        tables = documented()
        common = tables.pop(None)
        spans = {"incomplete", "ms_delta", "mem_delta"}
        for form, schema in forms.FORMS.items():
            if form.endswith("_value") or form == forms.ROOT_FORM:
                continue
            present = dict(tables.get(form, {}))
            if form.isupper():
                others = {"parent_id", "mem", "ms"} if form == "STARTUP" else {"sys_mem"}
                if form not in ("STARTUP", "FUNCTION_CALL", "INCLUDE_CALL", "SAPI_WRITE"):
                    others |= spans
                present.update((key, when) for key, when in common.items() if key not in others)
            self.assertEqual(set(forms.keys_of(form)), set(present), form)
            required = {key for key, when in present.items()
                        if when in ("always", "all but the root")}
            self.assertEqual(set(schema["required"]), required, form)


if __name__ == "__main__":
    unittest.main()
