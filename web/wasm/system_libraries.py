"""Builds the system libraries of emscripten that the page's module links, into its cache: as
embuilder does, but without a Python of its own for each of a thousand sources.

    system_libraries.py EMSCRIPTEN JOBS
"""
import multiprocessing
import os
import sys

NAMES = ["libc", "libcompiler_rt", "libc++-except", "libc++abi-except", "libunwind-except", "libdlmalloc",
         "libstubs", "libnoexit", "libhtml5", "libal", "libGL", "crt1", "struct_info"]

EMSCRIPTEN, JOBS = sys.argv[1], int(sys.argv[2])
sys.path.insert(0, EMSCRIPTEN)
import emcc  # noqa: E402
import embuilder  # noqa: E402
from tools import shared, system_libs  # noqa: E402


def compile_one(command):
    """In a process of its own, as the compiler keeps its settings in globals."""
    emcc.run_via_emxx = command[0] == shared.EMXX
    if emcc.run(command) not in (0, None):
        raise RuntimeError(" ".join(command))


def compile_all(commands):
    system_libs.ensure_sysroot()
    with multiprocessing.get_context("fork").Pool(JOBS, maxtasksperchild=1) as pool:
        pool.map(compile_one, commands, chunksize=1)


system_libs.run_build_commands = compile_all
for name in [name for name in ("EMMAKEN_CFLAGS", "EMCC_CFLAGS") if name in os.environ]:
    del os.environ[name]
sys.argv = ["embuilder", "build", *NAMES]
sys.exit(embuilder.main())
