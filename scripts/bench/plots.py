"""The pictures, drawn by gnuplot from the run's own data: relative numbers alone. The background is
left out and the ink is of middle brightness, so that a light page and a dark one both show them."""

import statistics
import subprocess

INK = "#7d8590"
COLOURS = ["#2f81f7", "#db6d28", "#2da44e", "#a475f9", "#d4a72c"]
STEP_COLOURS = COLOURS + ["#1b9aaa", "#c7528f", "#7d8590"]

HEAD = """set terminal svg size {width},{height} dynamic font 'Helvetica,13' fontscale 1
set output '{path}'
set border 3 lc rgb '{ink}'
set tics nomirror tc rgb '{ink}' font ',12'
set title tc rgb '{ink}'
set xlabel tc rgb '{ink}'
set ylabel tc rgb '{ink}'
set key tc rgb '{ink}' font ',12'
set grid lc rgb '{ink}' lw 0.3
"""


def run(path, commands, width=720, height=400):
    head = HEAD.format(path=path, ink=INK, width=width, height=height)
    subprocess.run(["gnuplot"], input=head + commands, text=True, check=True)


def block(name, rows):
    lines = "\n".join(" ".join(str(cell) for cell in row) for row in rows)
    return f"${name} << EOD\n{lines}\nEOD\n"


def curves(named_rows, style="linespoints pt 7 ps 0.6"):
    """The data blocks, and what plots them."""
    blocks = "".join(block(f"curve{at}", rows) for at, (_, rows) in enumerate(named_rows))
    plot = ", ".join(
        f"$curve{at} using 1:2 with {style} lw 2 lc rgb '{COLOURS[at]}' title '{name}'"
        for at, (name, _) in enumerate(named_rows))
    return blocks + f"plot {plot}\n"


NAMES = {"service": "the service", "rapidjson": "RapidJSON", "simdjson": "simdjson",
         "nlohmann": "nlohmann-json", "memcpy": "memcpy", "decoder": "base64 decoder",
         "echo": "the echo server"}


def medians_by_size(data, figure, subject):
    return [(size, statistics.median(data.get(figure, subject, size))) for size in data.sizes(figure, subject)]


def against_first(data, figure):
    """Each subject's medians, over the service's at its smallest size."""
    unit = medians_by_size(data, figure, "service")[0][1]
    return [(NAMES.get(who, who), [(size, time / unit) for size, time in medians_by_size(data, figure, who)])
            for who in data.subjects(figure)]


def draw_panel_reply(data, path):
    run(path, "set logscale xy\nset key outside right\n"
        "set xlabel 'bytes of the reply'\n"
        "set ylabel 'time, over the service at the smallest size'\n"
        "set format x '10^{%L}'\nset format y '10^{%L}'\n" + curves(against_first(data, "panel-reply")))


def draw_subscription(data, path):
    wanted = (("base64", "service", "the service, base64"), ("plain", "service", "the service, plain"),
              ("base64", "decoder", "base64 decoder"), ("base64", "memcpy", "memcpy"))
    unit = medians_by_size(data, "subscription-base64", "service")[0][1]
    rows = [(name, [(size, time / unit) for size, time in medians_by_size(data, f"subscription-{kind}", who)])
            for kind, who, name in wanted]
    run(path, "set logscale xy\nset key outside right\n"
        "set xlabel 'links in the subscription'\n"
        "set ylabel 'time, over 10 links in base64'\n"
        "set format x '10^{%L}'\nset format y '10^{%L}'\n" + curves(rows))


def draw_growth(data, path):
    names = ("nodes", "routes", "processes", "adapters", "pins")
    rows = [("pinned hosts" if name == "pins" else name,
             against_first(data, f"growth-{name}")[0][1]) for name in names]
    scaled = [(name, [(size / points[0][0], time) for size, time in points]) for name, points in rows]
    largest = max(size for _, points in scaled for size, _ in points)
    run(path, "set logscale xy\nset key outside right\n"
        "set xlabel 'how many times as much'\nset ylabel 'how many times the time'\n"
        f"set xrange [1:{largest}]\nset samples 2\n" +
        curves(scaled).replace("plot ", f"plot x with lines dt 2 lc rgb '{INK}' title 'linear', ", 1))


def draw_status(data, path):
    figure = "status-exchange-percentiles"
    unit = statistics.median(data.get(figure, "echo"))
    rows = [(NAMES[who], [(time / unit, percent) for percent, time in enumerate(data.get(figure, who), 1)])
            for who in ("service", "echo")]
    run(path, "set key bottom right\nset yrange [0:100]\n"
        "set xlabel 'time of a status exchange, over the median of the echo server'\n"
        "set ylabel '% of the exchanges'\n" + curves(rows, "lines"), height=320)


PARTS = (("xray", "waiting for Xray"), ("tun2socks", "waiting for tun2socks"),
         ("noticing", "noticing both"), ("network", "network calls"), ("commands", "netsh commands"), ("service", "the service itself"))


def shares_of(data, figure, subjects):
    """Of all rounds together: the trace's clock ticks in steps that only their mean evens out."""
    means = {who: statistics.mean(data.get(figure, who)) for who in subjects}
    whole = sum(means.values())
    return [(who, 100 * value / whole) for who, value in means.items()]


def step_shares(data):
    return shares_of(data, "connect-steps", data.subjects("connect-steps"))


def part_shares(data):
    names = dict(PARTS)
    return [(names[who], share)
            for who, share in shares_of(data, "connect-parts", [who for who, _ in PARTS])]


def shares_table(data):
    rows = ["| part of a connect | share |", "|---|---|"]
    rows += [f"| {name} | {share:.1f} % |" for name, share in part_shares(data)]
    rows += ["", "| step of the trace | share |", "|---|---|"]
    rows += [f"| {name} | {share:.1f} % |" for name, share in step_shares(data)]
    return "\n".join(rows)


def boxes(shares, y, colours):
    """Rectangles of the bar at `y`, with the number in those that have room for it."""
    commands, left = "", 0.0
    for (_, share), colour in zip(shares, colours):
        right = left + share
        commands += (f"set object rectangle from {left},{y - 0.3} to {right},{y + 0.3} "
                     f"fc rgb '{colour}' fs solid border lc rgb '{INK}'\n")
        if share >= 4:
            commands += (f"set label '{share:.0f} %' at {(left + right) / 2},{y} center front "
                         "tc rgb 'white' font ',12'\n")
        left = right
    return commands


def legend(shares, top, colours):
    """A coloured square and the name of each, four in a row."""
    commands = ""
    for at, ((name, _), colour) in enumerate(zip(shares, colours)):
        x, y = 25 * (at % 4), top - 0.4 * (at // 4)
        commands += (f"set object rectangle from {x},{y - 0.1} to {x + 1.5},{y + 0.1} fc rgb '{colour}' "
                     f"fs solid noborder\nset label '{name}' at {x + 2.2},{y} tc rgb '{INK}' font ',12'\n")
    return commands


def with_the_rest(shares, count):
    """The largest in their order, and the others as one."""
    kept = sorted(shares, key=lambda item: -item[1])[:count]
    rest = sum(share for item in shares if item not in kept for share in item[1:])
    return [item for item in shares if item in kept] + [("all other steps", rest)]


def draw_connect(data, path):
    parts, steps = part_shares(data), with_the_rest(step_shares(data), 7)
    run(path, "unset border\nunset tics\nunset key\nset xrange [0:100]\nset yrange [0:4.6]\n"
        "set lmargin 2\nset rmargin 2\n"
        f"set label 'who the time of a connect is spent on' at 0,4.4 tc rgb '{INK}'\n" +
        boxes(parts, 3.9, STEP_COLOURS) + legend(parts, 3.3, STEP_COLOURS) +
        f"set label 'its steps in the trace' at 0,2.2 tc rgb '{INK}'\n" +
        boxes(steps, 1.7, STEP_COLOURS) + legend(steps, 1.1, STEP_COLOURS) + "plot NaN\n", height=300)


DRAWN = {"connect": (draw_connect, "The shares of a connect"),
         "status": (draw_status, "Times of a status exchange"),
         "panel-reply": (draw_panel_reply, "A panel's reply, by its size"),
         "subscription": (draw_subscription, "A subscription, by its number of links"),
         "growth": (draw_growth, "How many times as much, how many times the time")}


def links(*names):
    """For a page that stands beside the directory of the pictures."""
    return "\n\n".join(f"![{DRAWN[name][1]}](images/performance-{name}.svg)" for name in names)


def draw_all(data, directory):
    directory.mkdir(exist_ok=True)
    for name, (draw, _) in DRAWN.items():
        draw(data, directory / f"performance-{name}.svg")
