# SPDX-License-Identifier: MIT
"""cttool(1): man/cttool.1.in with what the help texts say of each verb."""
import re


def plain(text):
    """Text for a roff line."""
    text = text.replace("\\", "\\e").replace("-", "\\-").replace("'", "\\(aq").replace("`", "\\(ga")
    return re.sub(r"^([.'])", r"\\&\1", text)


def sentences(text):
    """Each sentence on a line of its own, as mdoc wants it."""
    return re.sub(r"([.?!]) (?=[A-Z])", r"\1\n", plain(text))


def quoted(text):
    """A word that is no request of mdoc's, whatever it looks like."""
    return "\\&" + plain(text).replace(" ", "\\ ").replace('"', "\\(dq")


def item(row):
    names = " , ".join("Fl " + quoted(name[1:]) for name in row.names)
    return f".It {names}" + (f" Ar {quoted(row.value)}" if row.value else "") + "\n"


def options(rows):
    text = ".Bl -tag -width Ds\n"
    for row in rows:
        text += item(row) + sentences(row.meaning) + "\n"
    return text + ".El\n"


def section(verb):
    text = f".Ss {verb.name}\n{sentences(verb.question)}\n"
    text += f".Pp\n.Dl {plain(verb.usage)}\n"
    rows = [row for row in verb.options if row.names[-1] != "--help"]
    if rows:
        text += options(rows)
    text += ".Bd -literal -offset indent\n"
    for line in verb.examples:
        text += plain("$ " + line) + "\n"
    return text + ".Ed\n"


def manual(template, whole, verbs):
    text = template.replace("@OPTIONS@\n", options(whole.options))
    return text.replace("@VERBS@\n", "".join(section(verb) for verb in verbs))
