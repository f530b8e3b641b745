// What the page uses of Preact and htm.
export type Element = any;
export type Context<T> = { Provider: (props: { value: T; children?: any }) => Element };
export function html(strings: TemplateStringsArray, ...values: any[]): Element;
export function render(element: Element, parent: HTMLElement): void;
export function Fragment(props: { children?: any }): Element;
export function createContext<T>(value: T): Context<T>;
export function useContext<T>(context: Context<T>): T;
export function useState<T>(initial: T | (() => T)): [T, (value: T | ((old: T) => T)) => void];
export function useRef<T>(initial: T): { current: T };
export function useMemo<T>(make: () => T, depends: any[]): T;
export function useCallback<T>(callback: T, depends: any[]): T;
export function useEffect(run: () => void | (() => void), depends?: any[]): void;
export function useLayoutEffect(run: () => void | (() => void), depends?: any[]): void;
export function useErrorBoundary(): [any, () => void];
