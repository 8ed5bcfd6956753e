"""Which recordings a configuration names, and where their texts belong."""

import glob
import os
import shlex
from dataclasses import dataclass

KEYS = {"list", "folder", "pattern", "output", "base", "options", "chunk", "gzdconv", "gzdtool", "retry"}


class ConfigError(ValueError):
    """The configuration cannot be followed; the text is for the user."""


@dataclass(frozen=True)
class Recording:
    path: str  # as gzdconv is given it
    text: str  # below the output folder


@dataclass(frozen=True)
class Settings:
    source: str  # "list", "folder" or "pattern"
    where: str  # the path or pattern itself
    output: str
    base: str  # recordings keep their folders below this one; "" for none
    options: str
    chunk: int
    gzdconv: str
    gzdtool: str  # "" converts without it
    retry: bool


def read_settings(config):
    """Settings of a configuration, or a ConfigError that names the key."""
    unknown = set(config) - KEYS
    if unknown:
        raise ConfigError(f"unknown key {sorted(unknown)[0]!r}; known: {', '.join(sorted(KEYS))}")
    sources = [key for key in ("list", "folder", "pattern") if config.get(key)]
    if len(sources) != 1:
        raise ConfigError("give one of the keys list, folder and pattern: where the recordings are")
    if not config.get("output"):
        raise ConfigError("give the key output: the folder for the texts")
    if any(sign in str(config["output"]) for sign in "\\{}\t\r\n"):
        raise ConfigError("output: a name without braces, backslashes, tabs, line breaks, please")
    where = str(config[sources[0]])
    base = config.get("base") or (where if sources[0] == "folder" else "")
    return Settings(
        source=sources[0],
        where=where,
        output=os.path.normpath(str(config["output"])),
        base=os.path.normpath(str(base)) if base else "",
        options=_checked_options(str(config.get("options") or "")),
        chunk=_positive("chunk", config.get("chunk", 20)),
        gzdconv=str(config.get("gzdconv") or "gzdconv"),
        gzdtool=str(config.get("gzdtool") or ""),
        retry=_flag("retry", config.get("retry", False)),
    )


def find_recordings(settings):
    """The recordings, each once, or a ConfigError when they cannot all get a text of their own."""
    names = dict.fromkeys(map(_given_name, _names(settings)))
    if not names:
        raise ConfigError(f"no recordings in {settings.source} {settings.where}")
    owners = {}
    for name in names:
        text = _text_of(name, settings.base)
        if text in owners:
            raise ConfigError(
                f"{owners[text]} and {name} would both become {text} in {settings.output}; "
                "give the key base: a folder above both, below which their folders are kept"
            )
        owners[text] = name
    return [Recording(name, text) for text, name in owners.items()]


def is_recording_name(name):
    return name.lower().endswith(".gzd") and len(name) > len(".gzd")


def _names(settings):
    if settings.source == "list":
        return _listed(settings.where)
    if settings.source == "folder":
        return _below(settings.where)
    found = glob.glob(settings.where, recursive=True)
    return sorted(name for name in found if is_recording_name(name))


def _listed(path):
    try:
        with open(path, encoding="utf-8-sig", errors="surrogateescape") as lines:
            names = [line.rstrip("\r\n") for line in lines]
    except OSError as error:
        raise ConfigError(f"list {path}: {error.strerror}") from error
    return [name for name in names if name.strip() and not name.startswith("#")]


def _below(folder):
    if not os.path.isdir(folder):
        raise ConfigError(f"folder {folder} is not a folder")
    return sorted(
        os.path.join(where, name)
        for where, _, names in os.walk(folder)
        for name in names
        if is_recording_name(name)
    )


def _given_name(name):
    """The name for the command line, where a leading hyphen would make it an option."""
    if not is_recording_name(name):
        raise ConfigError(f"{name} is no recording: its name does not end in .gzd")
    if "\t" in name or "\n" in name or "\r" in name:
        raise ConfigError(f"{name!r} holds a tab or a line break, which the report cannot tell")
    name = os.path.normpath(name)
    return os.path.join(".", name) if name.startswith("-") else name


def _text_of(name, base):
    stem = name[: -len(".gzd")]
    if not base:
        return os.path.basename(stem) + ".asc"
    inside = os.path.relpath(stem, base)
    if inside.split(os.sep)[0] == os.pardir:
        raise ConfigError(f"{name} is not below base {base}")
    return inside + ".asc"


def _checked_options(options):
    """Options that name a place would make all jobs write the same file."""
    try:
        words = shlex.split(options)
    except ValueError as error:
        raise ConfigError(f"options: {error}") from error
    for word in map(str.lower, words):
        if word.startswith("-p") and not word.startswith(("-pe", "-npa")):
            raise ConfigError("options: -p is the workflow's own; use the key output")
        if word.startswith("-d") and not word.startswith("-defres"):
            raise ConfigError(f"options: {word} would make all jobs write one file")
    return options


def _positive(key, value):
    try:
        number = int(value)
    except (TypeError, ValueError):
        number = 0
    if not 1 <= number <= 1000:
        raise ConfigError(f"{key}: a number from 1 to 1000, not {value!r}")
    return number


def _flag(key, value):
    known = {"true": True, "yes": True, "1": True, "false": False, "no": False, "0": False}
    if str(value).lower() not in known:
        raise ConfigError(f"{key}: yes or no, not {value!r}")
    return known[str(value).lower()]
