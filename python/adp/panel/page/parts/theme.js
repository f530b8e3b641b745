// The switch between dark and light. Without a choice the system's holds.
import { html, useEffect, useState } from "../vendor/preact.js";

const KEY = "adp-panel-theme";
const NEXT = { "": "dark", dark: "light", light: "" };
const NAMES = { "": "as the system", dark: "dark", light: "light" };

/** @returns {keyof typeof NEXT} */
function chosen() {
    const value = localStorage.getItem(KEY) ?? "";
    return value === "dark" || value === "light" ? value : "";
}

export function ThemeButton() {
    const [theme, setTheme] = useState(chosen);
    useEffect(() => {
        document.documentElement.dataset.theme = theme;
        localStorage.setItem(KEY, theme);
    }, [theme]);
    const next = () => setTheme(/** @type {keyof typeof NEXT} */ (NEXT[theme]));
    return html`<button type="button" class="theme" onClick=${next}>Colours: ${NAMES[theme]}</button>`;
}
