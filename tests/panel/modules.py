"""Calls functions of the page's modules, in the browser."""

import json

CALL = """
    const [values, done] = arguments;
    const load = (file) => import(new URL(file, document.baseURI));
    (async () => {{
        const module = await load("{file}");
        return {text};
    }})().then((value) => done({{value: JSON.stringify(value)}}), (problem) => done({{problem: String(problem)}}));
"""


def evaluated(page, file, text, *values):
    """The value of an expression in which `module` is a module of the page, and `load` gives others."""
    answer = page.driver.execute_async_script(CALL.format(file=file, text=text), values)
    assert "problem" not in answer, answer
    return json.loads(answer["value"])
