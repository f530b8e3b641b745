// What the server says, and what a device answers.

/** A device of the panel. The commands are what a person types before a command for it. */
export interface Device {
    name: string;
    running: boolean;
    vdevctl: string;
    adpsh: string;
    exec: string;
}

export interface LabNode {
    name: string;
    kind: "adp" | "linux";
    running: boolean;
    addresses: string[];
    remarks: string[];
}

/** An end's `port` is a device's user port, or null at a host. */
export interface CableEnd {
    node: string;
    interface: string;
    port: number | null;
}

export interface Lab {
    name: string;
    command: string;
    nodes: LabNode[];
    cables: { ends: [CableEnd, CableEnd] }[];
}

export interface Panel {
    version: string;
    read_only: boolean;
    devices: Device[];
    lab: Lab | null;
}

/** A request of the control socket. */
export type Request = { command: string; [member: string]: any };

/** The newest answer to a request that is read again and again. When `error` is set, `answer` is an older one. */
export interface Reading {
    answer: any;
    error: string | null;
}

/** Where in the page one is: `#view/device/rest...`. */
export interface Place {
    view: string;
    device: string;
    rest: string[];
}
