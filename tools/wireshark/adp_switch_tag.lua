-- The switch tag between switch and CPU, for Wireshark and tshark. See docs/how-to/capture-frames.md for how to load it,
-- docs/reference/cpu-frames.md for the tag.

local TAG_TYPE = 0x8874
local WORD_OCTETS = 4
local TRANSMIT_OCTETS = 8 -- both words; the type in front of them is the Ethernet dissector's
local WORD1_PORTS = 25 -- word 1 has the bits of the ports 0 to 24
local CPU_PORT = 0
local FIRST_ETHERTYPE = 0x0600 -- what is less is a length

local FROM_CPU, TO_CPU = 1, 2
local DIRECTIONS = { [FROM_CPU] = "from the CPU", [TO_CPU] = "to the CPU" }
local OPCODES = {
    [0] = "dropped",
    [1] = "switched like a frame that came in on port 0",
    [2] = "dropped (reserved)",
    [3] = "to one port, with the egress rule",
    [4] = "to a set of ports, with the egress rule",
    [5] = "to one port, as it is",
    [6] = "to one port, as it is",
    [7] = "to a set of ports, as it is",
}
local ONE_PORT = { [3] = true, [5] = true, [6] = true }
local PORT_SET = { [4] = true, [7] = true }

local tag = Proto("adp_tag", "Switch Tag")

local field = {
    direction = ProtoField.uint8("adp_tag.direction", "Direction", base.DEC, DIRECTIONS),
    word1 = ProtoField.uint32("adp_tag.word1", "Word 1", base.HEX),
    opcode = ProtoField.uint32("adp_tag.opcode", "Opcode", base.DEC, OPCODES, 0xE0000000),
    flags = ProtoField.uint32("adp_tag.flags", "Flags, ignored", base.HEX, nil, 0x1E000000),
    destination = ProtoField.uint32("adp_tag.destination", "Destination, ignored", base.HEX, nil, 0x01FFFFFF),
    port = ProtoField.uint32("adp_tag.port", "Destination chip port", base.DEC, nil, 0x01FFFFFF),
    ports1 = ProtoField.uint32("adp_tag.ports1", "Destination chip ports 0 to 24", base.HEX, nil, 0x01FFFFFF),
    word2 = ProtoField.uint32("adp_tag.word2", "Word 2, ignored", base.HEX),
    ports2 = ProtoField.uint32("adp_tag.ports2", "Word 2, destination chip ports 25 to 56", base.HEX),
    word = ProtoField.uint32("adp_tag.word", "Word", base.HEX),
    reserved = ProtoField.uint32("adp_tag.reserved", "Reserved", base.HEX, nil, 0xFFFFFFC0),
    ingress = ProtoField.uint32("adp_tag.ingress", "Ingress chip port", base.DEC, nil, 0x0000003F),
    from = ProtoField.uint32("adp_tag.from", "From user port", base.DEC),
    to = ProtoField.uint32("adp_tag.to", "To user port", base.DEC),
    summary = ProtoField.string("adp_tag.summary", "Summary"),
    type = ProtoField.uint16("adp_tag.type", "Type", base.HEX),
    length = ProtoField.uint16("adp_tag.length", "Length", base.DEC),
    trailer = ProtoField.bytes("adp_tag.trailer", "Trailer"),
}
tag.fields = field

local note = {
    truncated = ProtoExpert.new("adp_tag.truncated", "The frame ends inside its switch tag",
        expert.group.MALFORMED, expert.severity.ERROR),
    bare = ProtoExpert.new("adp_tag.bare", "The frame ends behind its switch tag, without a type",
        expert.group.MALFORMED, expert.severity.ERROR),
    snapped = ProtoExpert.new("adp_tag.snapped", "The capture has only the start of the frame",
        expert.group.UNDECODED, expert.severity.NOTE),
    length = ProtoExpert.new("adp_tag.length.bad", "The length is more than the frame has",
        expert.group.MALFORMED, expert.severity.ERROR),
    reserved = ProtoExpert.new("adp_tag.reserved.set", "Reserved bits are set",
        expert.group.PROTOCOL, expert.severity.WARN),
    dropped = ProtoExpert.new("adp_tag.dropped", "The switch drops frames with this opcode",
        expert.group.PROTOCOL, expert.severity.WARN),
    no_port = ProtoExpert.new("adp_tag.no_port", "The destination has no port",
        expert.group.PROTOCOL, expert.severity.WARN),
    unknown_port = ProtoExpert.new("adp_tag.unknown_port", "The board has no user port at this chip port",
        expert.group.PROTOCOL, expert.severity.NOTE),
    bad_map = ProtoExpert.new("adp_tag.bad_map", "The preference with the chip ports cannot be read",
        expert.group.UNDECODED, expert.severity.WARN),
}
tag.experts = note

tag.prefs.direction = Pref.enum("Direction", 0, "Which of the two tags frames have", {
    { 1, "As the tag tells", 0 }, { 2, "From the CPU", FROM_CPU }, { 3, "To the CPU", TO_CPU } }, false)
tag.prefs.chip_ports = Pref.string("Chip ports", "4-29",
    "The chip ports of the user ports 1, 2, 3, ... in their order: 4-29, or 8,9,4-7")

local user_ports -- by chip port; nil if the preference cannot be read

-- "4-6,9" as {4, 5, 6, 9}, blanks as {}; nil for anything else.
local function parse_ports(text)
    local ports = {}
    if not text:find("%S") then
        return ports
    end
    for item in (text .. ","):gmatch("([^,]*),") do
        local first, last = item:match("^%s*(%d+)%s*%-%s*(%d+)%s*$")
        first = first or item:match("^%s*(%d+)%s*$")
        first, last = tonumber(first), tonumber(last or first)
        if not first or last < first or last > 63 then
            return nil
        end
        for port = first, last do
            ports[#ports + 1] = port
        end
    end
    return ports
end

local function read_map()
    local ports = parse_ports(tag.prefs.chip_ports)
    user_ports = ports and {}
    for number, port in ipairs(ports or {}) do
        user_ports[port] = number
    end
end
tag.prefs_changed = read_map
read_map()

-- {1, 2, 3, 7} as "1-3,7".
local function as_ranges(numbers)
    local ranges = {}
    local first
    for at, number in ipairs(numbers) do
        first = first or number
        if numbers[at + 1] ~= number + 1 then
            ranges[#ranges + 1] = first == number and tostring(number) or first .. "-" .. number
            first = nil
        end
    end
    return table.concat(ranges, ",")
end

-- Sorted user ports, and the chip ports that have none.
local function split_ports(chip_ports)
    local known, others = {}, {}
    for _, port in ipairs(chip_ports) do
        local user_port = user_ports and user_ports[port]
        table.insert(user_port and known or others, user_port or port)
    end
    table.sort(known)
    return known, others
end

local function plural(word, numbers)
    return word .. (#numbers == 1 and " " or "s ") .. as_ranges(numbers)
end

-- "port 7", "ports 2,21-26 and chip port 31", "no port".
local function port_text(known, others)
    local parts = {}
    if #known > 0 then
        parts[1] = plural("port", known)
    end
    if #others > 0 then
        parts[#parts + 1] = plural("chip port", others)
    end
    return #parts > 0 and table.concat(parts, " and ") or "no port"
end

local function add_generated(tree, proto_field, range, value)
    local item = tree:add(proto_field, range, value)
    item:set_generated()
    return item
end

local function summarize(tree, range, text)
    add_generated(tree, field.summary, range, text)
    tree:append_text(", " .. text)
    return "[" .. text .. "] "
end

-- The chip ports of a bitmap in two words.
local function ports_of(word1, word2)
    local ports = {}
    for bit = 0, WORD1_PORTS - 1 do
        if word1:bitfield(31 - bit, 1) == 1 then
            ports[#ports + 1] = bit
        end
    end
    for bit = 0, 31 do
        if word2:bitfield(31 - bit, 1) == 1 then
            ports[#ports + 1] = WORD1_PORTS + bit
        end
    end
    return ports
end

local function add_destination(tree, range, chip_ports)
    local known, others = split_ports(chip_ports)
    for _, port in ipairs(known) do
        add_generated(tree, field.to, range, port)
    end
    if #chip_ports == 0 then
        tree:add_proto_expert_info(note.no_port)
    elseif #others > 0 then
        tree:add_proto_expert_info(note.unknown_port, "The board has no user port at " .. plural("chip port", others))
    end
    return summarize(tree, range, "to " .. port_text(known, others))
end

local function dissect_transmit_words(tree, buffer)
    local word1, word2 = buffer(0, WORD_OCTETS), buffer(WORD_OCTETS, WORD_OCTETS)
    local opcode = word1:bitfield(0, 3)
    local branch = tree:add(field.word1, word1)
    branch:add(field.opcode, word1)
    branch:add(field.flags, word1)
    if PORT_SET[opcode] then
        branch:add(field.ports1, word1)
        tree:add(field.ports2, word2)
        return add_destination(tree, buffer(0, TRANSMIT_OCTETS), ports_of(word1, word2))
    end
    branch:add(ONE_PORT[opcode] and field.port or field.destination, word1)
    tree:add(field.word2, word2)
    if ONE_PORT[opcode] then
        return add_destination(tree, word1, { word1:bitfield(7, 25) })
    elseif opcode == 1 then
        return summarize(tree, word1, "switched")
    end
    tree:add_proto_expert_info(note.dropped)
    return summarize(tree, word1, "dropped")
end

local function dissect_receive_word(tree, buffer)
    local word = buffer(0, WORD_OCTETS)
    local port = word:bitfield(26, 6)
    local branch = tree:add(field.word, word)
    branch:add(field.reserved, word)
    branch:add(field.ingress, word)
    if word:bitfield(0, 26) ~= 0 then
        tree:add_proto_expert_info(note.reserved)
    end
    if port == CPU_PORT then
        return summarize(tree, word, "from the CPU port")
    end
    local known, others = split_ports({ port })
    if known[1] then
        add_generated(tree, field.from, word, known[1])
    else
        tree:add_proto_expert_info(note.unknown_port)
    end
    return summarize(tree, word, "from " .. port_text(known, others))
end

-- What the frame lacks, unless it is the capture that lacks it.
local function add_lack(tree, is_snapped, malformed)
    if not is_snapped then
        tree:add_proto_expert_info(malformed)
    end
end

-- 802.3: the length counts from the LLC header on; what follows it is padding.
local function dissect_llc(tree, rest, length, is_snapped, pinfo, root)
    if length > rest:len() then
        add_lack(tree, is_snapped, note.length)
        length = rest:len()
    end
    if length < rest:len() then
        tree:add(field.trailer, rest(length))
    end
    if length > 0 then
        Dissector.get("llc"):call(rest(0, length):tvb(), pinfo, root)
    end
end

-- A frame from the switch has a VLAN tag, whatever its type: ports have types of their own.
local function dissect_inner(tree, buffer, direction, is_snapped, pinfo, root)
    if buffer:len() < 2 then
        add_lack(tree, is_snapped, note.bare)
        return
    end
    local kind = buffer(0, 2):uint()
    tree:add(kind < FIRST_ETHERTYPE and field.length or field.type, buffer(0, 2))
    if buffer:len() == 2 then
        return
    end
    local rest = buffer(2):tvb()
    if direction == TO_CPU and kind >= FIRST_ETHERTYPE then
        Dissector.get("vlan"):call(rest, pinfo, root)
    elseif kind < FIRST_ETHERTYPE then
        dissect_llc(tree, rest, kind, is_snapped, pinfo, root)
    else
        DissectorTable.get("ethertype"):try(kind, rest, pinfo, root)
    end
end

-- The tag to the CPU has an ingress port and nothing else in its word, and a type behind it. Without one, the word is that
-- of a frame from the CPU with opcode 0, whose word 2 follows.
local function direction_of(buffer)
    if tag.prefs.direction ~= 0 then
        return tag.prefs.direction
    elseif buffer(0, WORD_OCTETS):bitfield(0, 26) ~= 0 then
        return FROM_CPU
    elseif buffer:len() >= WORD_OCTETS + 2 and buffer(WORD_OCTETS, 2):uint() < FIRST_ETHERTYPE then
        return FROM_CPU
    end
    return TO_CPU
end

function tag.dissector(buffer, pinfo, root)
    pinfo.cols.protocol = "Switch tag"
    local tree = root:add(tag, buffer())
    if not user_ports then
        tree:add_proto_expert_info(note.bad_map)
    end
    local is_snapped = buffer:reported_len() > buffer:len()
    if is_snapped then
        tree:add_proto_expert_info(note.snapped)
    end
    local direction = buffer:len() >= WORD_OCTETS and direction_of(buffer)
    local length = direction == TO_CPU and WORD_OCTETS or TRANSMIT_OCTETS
    if not direction or buffer:len() < length then
        add_lack(tree, is_snapped, note.truncated)
        pinfo.cols.info = "[switch tag cut off]"
        return
    end
    tree:set_len(length)
    tree:append_text(" " .. DIRECTIONS[direction])
    add_generated(tree, field.direction, buffer(0, length), direction)
    local dissect_words = direction == TO_CPU and dissect_receive_word or dissect_transmit_words
    local summary = dissect_words(tree, buffer)
    pinfo.cols.info = ""
    if buffer:len() == length then
        add_lack(tree, is_snapped, note.bare)
    else
        -- What is malformed in the frame is told by its own dissector, and then raised here again.
        pcall(dissect_inner, tree, buffer(length):tvb(), direction, is_snapped, pinfo, root)
    end
    pinfo.cols.info:prepend(summary)
end

-- Instead of what the tool knows of this type.
DissectorTable.get("ethertype"):set(TAG_TYPE, tag)
