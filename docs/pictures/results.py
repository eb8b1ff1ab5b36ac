"""Writes the results of an analysis of a low-pass filter, for the pictures of the report pages.

usage: results.py sensitivity|montecarlo|worstcase FILE
"""

import base64
import math
import random
import struct
import sys

NOMINAL = {"R1": 1000.0, "R2": 1000.0, "C1": 1e-7, "C2": 4.7e-8}


def number(value):
    return base64.b64encode(struct.pack("<d", value)).decode()


def results(parts):
    """The cut-off frequency in hertz, and the gain at 1 kHz in decibels."""
    cutoff = 1 / (2 * math.pi * math.sqrt(parts["R1"] * parts["R2"] * parts["C1"] * parts["C2"]))
    return [cutoff, -10 * math.log10(1 + (1000 / cutoff) ** 4)]


def cases(analysis):
    yield {}
    if analysis == "sensitivity":
        yield from ({name: value * 1.01} for name, value in NOMINAL.items())
    elif analysis == "montecarlo":
        numbers = random.Random(1)
        for _ in range(60):
            yield {name: numbers.gauss(value, value * 0.02) for name, value in NOMINAL.items()}
    else:
        for bits in range(16):
            yield {name: value * (1.05 if bits >> i & 1 else 0.95) for i, (name, value) in enumerate(NOMINAL.items())}


def main(analysis, path):
    nominal = results(NOMINAL)
    with open(path, "w") as out:
        out.write('<results xmlns="https://schemas.example.org/schemas/application/msw/">\n'
                  f'<header date="2026-11-22 12:00" analysis="{analysis}" card=".AC V(out)" title="Low-pass filter" cores="4">\n'
                  '<meritfunction name="Cut-off (Hz)"/><meritfunction name="Gain at 1 kHz (dB)"/></header>\n')
        for i, changed in enumerate(cases(analysis)):
            out.write(f'<case id="{i + 1}" seed="{1000 + i}"><step index="0">')
            for name, value in changed.items():
                out.write(f'<parameter refdes="{name}" nominal="{number(NOMINAL[name])}" value="{number(value)}"/>')
            for index, value in enumerate(results({**NOMINAL, **changed})):
                out.write(f'<meritfunction index="{index}" reference="{number(value)}" '
                          f'delta="{number(value - nominal[index])}"/>')
            out.write("</step></case>\n")
        out.write("</results>\n")


main(*sys.argv[1:])
