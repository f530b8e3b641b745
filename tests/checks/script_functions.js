// Finds the functions of JavaScript files: node script_functions.js FILE... prints {file: [{name, line, lines}]}.
// A function is counted from its first line to its last; what is written without braces belongs to the function around it.
"use strict";
const fs = require("fs");
const ts = require("typescript");

function nameOf(node, source) {
    if (ts.isConstructorDeclaration(node)) {
        return "constructor";
    }
    const named = node.name ?? node.parent.name;
    return named ? named.getText(source) : "function";
}

function functionsOf(path) {
    const source = ts.createSourceFile(path, fs.readFileSync(path, "utf-8"), ts.ScriptTarget.Latest, true);
    const line = (at) => source.getLineAndCharacterOfPosition(at).line + 1;
    const found = [];
    const visit = (node) => {
        if (ts.isFunctionLike(node) && node.body && ts.isBlock(node.body)) {
            const first = line(node.getStart(source));
            found.push({ name: nameOf(node, source), line: first, lines: line(node.end) - first + 1 });
        }
        ts.forEachChild(node, visit);
    };
    visit(source);
    return found;
}

console.log(JSON.stringify(Object.fromEntries(process.argv.slice(2).map((path) => [path, functionsOf(path)]))));
