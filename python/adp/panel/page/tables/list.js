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
];
