"""A plain table of texts."""


def render(header, rows):
    """The lines of a table whose columns are as wide as their longest text; the first one is left-aligned."""
    texts = [[str(cell) for cell in row] for row in [header, *rows]]
    widths = [max(len(row[column]) for row in texts) for column in range(len(header))]
    lines = []
    for row in texts:
        cells = [row[0].ljust(widths[0])] + [cell.rjust(width) for cell, width in zip(row[1:], widths[1:])]
        lines.append("  ".join(cells).rstrip())
    lines.insert(1, "  ".join("-" * width for width in widths))
    return lines
