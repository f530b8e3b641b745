"""Results as tables and as JSON."""

import json


def text_of(value):
    if value is None:
        return ""
    return f"{value:.2f}" if isinstance(value, float) else f"{value:,}" if isinstance(value, int) else str(value)


def table_lines(table):
    """Lines of the table, numbers aligned to the right."""
    columns = list(zip(table["columns"], *table["rows"]))
    shown = []
    for heading, *values in columns:
        cells = [heading, *map(text_of, values)]
        width = max(map(len, cells))
        is_number = all(value is None or isinstance(value, (int, float)) for value in values)
        shown.append([cell.rjust(width) if is_number else cell.ljust(width) for cell in cells])
    return ["  ".join(cells).rstrip() for cells in zip(*shown)]


def show(result, out):
    for table in result["tables"]:
        print("\n".join([table["title"], *("  " + line for line in table_lines(table)), ""]), file=out)
    for note in result.get("notes", []):
        print(note, file=out)
    out.flush()


def keep(result, path):
    path.write_text(json.dumps(result, indent=1) + "\n", encoding="utf-8")
