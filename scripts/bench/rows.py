"""Which figures there are, what each is held against, and its goal."""

from data import difference, per_item, plain, ratio, worst_growth, worst_speed

KIB = 1024
MILLISECONDS = 1e-6  # of a nanosecond


class Row:
    """One line of the table. `find` makes the value of a data set, None when it is missing."""

    def __init__(self, figure, floor, goal, find, is_met, form="{:.2f}", is_count=False):
        self.figure = figure
        self.floor = floor
        self.goal = goal
        self.find = find
        self.is_met = is_met  # of the median; None: shown without a goal
        self.form = form
        self.is_count = is_count  # the only ones that can fail


def at_most(limit):
    return lambda median: median <= limit


def at_least(limit):
    return lambda median: median >= limit


def exchange(percent, is_met, goal):
    name = f"status-exchange-p{percent}"
    return Row(f"a `status` exchange, p{percent}", "an echo server that appends a line", goal,
               lambda data: ratio(data, name, "service", "echo"), is_met)


def late(name, title):
    return Row(f"lateness: {title}", "the poll's own period", "≤ 1 period",
               lambda data: ratio(data, name, "service", "period"), at_most(1))


def speed(name, title, peer, peer_title, goal=None):
    return Row(title, peer_title, f"≥ {goal}" if goal else "", lambda data: worst_speed(data, name, peer),
               at_least(goal) if goal else None, "{:.3f}" if peer in ("memcpy", "decoder") else "{:.2f}")


def growth(name, title):
    return Row(f"{title}: ten times as much", "ten times the time", "≤ 1.1",
               lambda data: worst_growth(data, name), at_most(1.1))


def calls(name, title):
    return Row(f"platform calls of {title}", "the least for the ordered steps", "equal",
               lambda data: difference(data, f"platform-calls-{name}", "service", "least"),
               lambda median: median == 0, "{:+.0f}", is_count=True)


def memory(name, title, peer, floor):
    return Row(f"private memory, {title}", floor, "≤ 1024 KiB more",
               lambda data: scaled(difference(data, name, "service", peer), 1 / KIB),
               at_most(KIB), "{:+.0f} KiB")


def scaled(value, factor):
    if value:
        value.median *= factor
        value.low *= factor
        value.high *= factor
    return value


def client(command, floor):
    return Row(f"`tavrinctl {command}`, 100 MB trace, 1,000,000 log lines", floor, "≤ 1.5",
               lambda data: ratio(data, f"client-{command}", "service", "tail"), at_most(1.5))


PARSERS = (("rapidjson", "RapidJSON", 1), ("simdjson", "simdjson", None),
           ("nlohmann", "nlohmann-json", None), ("memcpy", "memcpy", None))

ROWS = [
    exchange(50, at_most(1.10), "≤ 1.10"),
    exchange(99, None, ""),
    Row("instructions of a `status`", "a plain scan of the same bytes", "≤ 3",
        lambda data: ratio(data, "status-instructions", "service", "scan"), at_most(3)),
    Row("a connect's own time", "waits for helpers and commands taken out", "≤ 60 ms",
        lambda data: plain(data, "connect-own", "service", MILLISECONDS), at_most(60), "{:.0f} ms"),
    late("notice-port", "port open"),
    late("notice-adapter", "adapter up"),
    late("notice-address", "address there"),
    calls("connect", "a connect"),
    calls("disconnect", "a disconnect"),
    Row("platform calls of an idle minute", "none", "0",
        lambda data: plain(data, "platform-calls-idle", "service"), lambda median: median == 0,
        "{:.0f}", is_count=True),
    *[speed("panel-reply", "speed on a panel reply, slowest size", peer, title, goal)
      for peer, title, goal in PARSERS],
    growth("panel-reply", "a panel reply"),
    *[speed(f"subscription-{kind}", f"speed on a subscription, {kind}, slowest size", peer, title, goal)
      for kind in ("base64", "plain")
      for peer, title, goal in (("decoder", "a packaged base64 decoder", 0.1), ("memcpy", "memcpy", None))],
    growth("subscription-base64", "a subscription in base64"),
    growth("subscription-plain", "a subscription in plain text"),
    growth("growth-nodes", "nodes"),
    growth("growth-routes", "routes"),
    growth("growth-processes", "processes"),
    growth("growth-adapters", "adapters"),
    growth("growth-pins", "pinned hosts"),
    Row("the executable", "its limit", "≤ 330 KiB",
        lambda data: plain(data, "executable", "service", 1 / KIB), at_most(330), "{:.0f} KiB"),
    Row("the executable's bytes", "a comparable program", "",
        lambda data: ratio(data, "executable", "service", "comparable"), None),
    memory("memory-idle", "idle", "empty", "an empty executable"),
    memory("memory-idle", "idle", "threaded", "one that has ended a thread"),
    memory("memory-peak", "peak of a connect", "empty", "an empty executable"),
    memory("memory-peak", "peak of a connect", "threaded", "one that has ended a thread"),
    Row("private memory, each of 10,000 nodes", "none", "≤ 2 KiB",
        lambda data: scaled(per_item(data, "memory-nodes"), 1 / KIB), at_most(2), "{:.2f} KiB"),
    Row("start to first answer", "an empty executable, start to end", "≤ 1.3",
        lambda data: ratio(data, "start", "service", "empty"), at_most(1.3)),
    client("trace", "reading the last 1 MiB"),
    client("report", "the same, and a report without the files"),
]
