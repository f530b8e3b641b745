// Breaks text into lines for a drawing, in which nothing else does.

const FONT_SIZE = 13;

/** @type {CanvasRenderingContext2D | null} */
let context = null;

/**
 * How wide a text is, in pixels.
 * @param {string} text
 */
function widthOf(text) {
    if (!context) {
        context = document.createElement("canvas").getContext("2d");
        if (context) {
            context.font = `${FONT_SIZE}px ${getComputedStyle(document.body).fontFamily}`;
        }
    }
    return context ? context.measureText(text).width : text.length * FONT_SIZE * 0.6;
}

/**
 * The lines of a text. A word that is longer than a line stays whole.
 * @param {string} text
 * @param {number} width in pixels
 * @returns {string[]}
 */
export function linesOf(text, width) {
    return text.split("\n").flatMap((paragraph) => {
        /** @type {string[]} */
        const lines = [];
        for (const word of paragraph.trim().split(/\s+/)) {
            const longer = lines.length > 0 ? `${lines[lines.length - 1]} ${word}` : "";
            if (longer && widthOf(longer) <= width) {
                lines[lines.length - 1] = longer;
            } else {
                lines.push(word);
            }
        }
        return lines;
    });
}
