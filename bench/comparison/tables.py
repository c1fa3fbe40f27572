"""Tables for people, and the same ones for docs/performance.md."""
import statistics


def text_of(headings, rows, markdown):
    """Numbers to the right. The first column is text."""
    widths = [max(len(row[i]) for row in [headings] + rows) for i in range(len(headings))]

    def line(cells):
        padded = [cell.ljust(width) if i == 0 else cell.rjust(width)
                  for i, (cell, width) in enumerate(zip(cells, widths))]
        return "| " + " | ".join(padded) + " |" if markdown else "  ".join(padded).rstrip()

    rule = ["-" * width if i == 0 else "-" * (width - 1) + ":" for i, width in enumerate(widths)]
    head = [line(headings)] + ([line(rule)] if markdown else [])
    return "\n".join(head + [line(row) for row in rows])


def duration(nanoseconds):
    """Three digits, and a unit that fits."""
    for size, unit in ((1e9, "s"), (1e6, "ms"), (1e3, "µs"), (1, "ns")):
        if nanoseconds >= size:
            break
    value = nanoseconds / size
    return f"{value:.{2 if value < 10 else 1 if value < 100 else 0}f} {unit}"


def _amount(values, unit):
    middle = statistics.median(values)
    return f"{middle:.0f} bytes" if unit == "byte" else f"{duration(middle)}/{unit}"


def comparison(results, markdown):
    headings = ["work", "ours", "peer", "ratio", "middle half", "processor", "at most", "aim", ""]
    rows = []
    for result in results:
        spread = result.spread
        processor = result.processor_ratio
        title = result.title if markdown else f"{result.name}: {result.title}"
        rows.append([title, _amount(result.ours, result.unit), _amount(result.peer, result.unit),
                     f"{result.ratio:.2f}",
                     f"{spread[0]:.2f}..{spread[1]:.2f}" if spread else "-",
                     f"{processor:.2f}" if processor is not None else "-",
                     f"{result.at_most:.2f}", f"{result.aim:.2f}", result.verdict])
    return text_of(headings, rows, markdown)
