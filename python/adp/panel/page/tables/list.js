// The tables, in the order of their list. Each is shown with the device.
import { Vlans } from "./vlans.js";
import { Addresses } from "./addresses.js";
import { Trunks } from "./trunks.js";
import { SpanningTree } from "./spanning_tree.js";
import { Multicast } from "./multicast.js";
import { Rules } from "./rules.js";
import { Queues } from "./queues.js";
import { Meters } from "./meters.js";
import { Storm } from "./storm.js";
import { Limits } from "./limits.js";
import { Mirrors } from "./mirrors.js";
import { Translations } from "./translations.js";
import { Priorities } from "./priorities.js";
import { Reserved } from "./reserved.js";
import { Log } from "./log.js";
import { Events } from "./events.js";

export const TABLES = [
    { name: "vlans", title: "VLANs", show: Vlans },
    { name: "addresses", title: "Addresses", show: Addresses },
    { name: "trunks", title: "Trunks", show: Trunks },
    { name: "spanning-tree", title: "Spanning tree", show: SpanningTree },
    { name: "multicast", title: "Multicast", show: Multicast },
    { name: "rules", title: "Rules", show: Rules },
    { name: "queues", title: "Queues", show: Queues },
    { name: "meters", title: "Meters", show: Meters },
    { name: "storm", title: "Storm limits", show: Storm },
    { name: "limits", title: "Limits on learning", show: Limits },
    { name: "mirrors", title: "Mirrors", show: Mirrors },
    { name: "translations", title: "VLAN tags", show: Translations },
    { name: "priorities", title: "Priorities", show: Priorities },
    { name: "reserved", title: "Traps", show: Reserved },
    { name: "log", title: "Log", show: Log },
    { name: "events", title: "Events", show: Events },
];
