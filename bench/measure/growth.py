"""How costs grow with the length of a request, its parameters and the number of sending threads."""

from .goals import Figures, figure

LENGTHS = (100, 1000, 10000, 100000, 1000000)
PARAMETERS = range(7)
THREADS = (1, 2, 4)


def rows(figures: Figures) -> list[tuple[str, str]]:
    made = [(f"Request with a value of {length:,} bytes", figure(figures[f"requestLength/{length}"]) + " ns")
            for length in LENGTHS]
    made += [(f"Request with {count} parameters", figure(figures[f"parameters/{count}"]) + " ns")
             for count in PARAMETERS]
    made += [(f"Requests of {count} threads at once, each", figure(figures[f"threads/real_time/threads:{count}"]) + " ns")
             for count in THREADS]
    return made
