"""Calls functions of the page's modules, in the browser."""

import json

CALL = """
    const [file, text, values, done] = arguments;
    import(new URL(file, document.baseURI)).then((module) => new Function("module", "values", `return ${text}`)(module, values))
        .then((value) => done({value: JSON.stringify(value) ?? null}), (problem) => done({problem: String(problem)}));
"""


def evaluated(page, file, text, *values):
    """The value of an expression in which `module` is a module of the page and `values` what is given."""
    answer = page.driver.execute_async_script(CALL, file, text, values)
    assert "problem" not in answer, answer
    return json.loads(answer["value"])
