"""Bytes that tell where they lie, so that a field which is taken from the wrong place, or in the wrong width or byte
order, shows.
"""
import math

# Each 255 bytes step by another of these. No two numbers of two bytes or more are then alike within a file, not even
# with their bytes swapped: for that, no step may be the negative of another.
STEPS = [step for step in range(1, 128) if math.gcd(step, 255) == 1]


def pattern(size, start=0):
    """The bytes of the pattern from a position on, none of them zero."""
    return bytes(1 + position * STEPS[position // 255 % len(STEPS)] % 255 for position in range(start, start + size))


def positions(size, start):
    """Text without end, of the offsets at which it lies: "00514.00520." and so on."""
    return "".join(f"{position:05}." for position in range(start, start + size, 6))[:size].encode()
