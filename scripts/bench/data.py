"""The lines that the measuring programs write, and the ratios that are made of them."""

import json
import math
import statistics


class Data:
    """Samples by figure, subject and size; one number for each round."""

    def __init__(self, path):
        self.samples = {}
        self.units = {}
        with open(path, encoding="utf-8") as lines:
            for line in lines:
                entry = json.loads(line)
                key = (entry["figure"], entry["subject"], entry["size"])
                self.samples[key] = entry["samples"]
                self.units[entry["figure"]] = entry["unit"]

    def get(self, figure, subject, size=0):
        """Empty when it was not measured."""
        return self.samples.get((figure, subject, size), [])

    def sizes(self, figure, subject="service"):
        return sorted(size for name, who, size in self.samples if (name, who) == (figure, subject))

    def subjects(self, figure):
        """In the order in which they were written."""
        found = [who for name, who, _ in self.samples if name == figure]
        return list(dict.fromkeys(found))


class Value:
    """A median and the spread: what 10 % of the rounds stayed below, and 90 %."""

    def __init__(self, values, size=0):
        self.median = statistics.median(values)
        ordered = sorted(values)
        last = len(ordered) - 1
        self.low = ordered[round(0.1 * last)]
        self.high = ordered[round(0.9 * last)]
        self.size = size
        self.rounds = len(values)


def ratios(upper, lower):
    """Of the same round each; None when there is nothing to divide."""
    pairs = [(above, below) for above, below in zip(upper, lower) if below]
    return [above / below for above, below in pairs] or None


def ratio(data, figure, subject, floor, size=0):
    values = ratios(data.get(figure, subject, size), data.get(figure, floor, size))
    return values and Value(values, size)


def worst_speed(data, figure, peer):
    """How fast the service is beside the peer, at the size where it is slowest."""
    found = []
    for size in data.sizes(figure):
        value = ratio(data, figure, peer, "service", size)
        if value:
            found.append(value)
    return min(found, key=lambda value: value.median, default=None)


def worst_growth(data, figure):
    """The time for ten times as much, over ten times the time; the largest of all sizes. Where the
    next size is more than ten times as much, it counts as so many steps of ten."""
    found = []
    sizes = data.sizes(figure)
    for small in sizes:
        large = next((size for size in sizes if size >= 10 * small), None)
        values = large and ratios(data.get(figure, "service", large), data.get(figure, "service", small))
        if values:
            steps = math.log10(large / small)
            found.append(Value([(value * small / large) ** (1 / steps) for value in values], large))
    return max(found, key=lambda value: value.median, default=None)


def difference(data, figure, subject, floor, size=0):
    pairs = zip(data.get(figure, subject, size), data.get(figure, floor, size))
    values = [above - below for above, below in pairs]
    return Value(values, size) if values else None


def per_item(data, figure, subject="service"):
    """What one more of the things costs that the sizes count."""
    sizes = data.sizes(figure, subject)
    if len(sizes) < 2:
        return None
    few, many = sizes[0], sizes[-1]
    pairs = zip(data.get(figure, subject, many), data.get(figure, subject, few))
    return Value([(above - below) / (many - few) for above, below in pairs], many)


def plain(data, figure, subject, scale=1.0):
    values = data.get(figure, subject)
    return Value([value * scale for value in values]) if values else None
