-- Wireshark dissector of the K740 protocol: command packets, multicast audio and intercom audio.
-- Copy this one file into a folder of Lua plugins (docs/wireshark.md). Layouts: docs/wire-format.md.

local k740 = Proto("k740", "K740 public address")

local kMagic = 0x4A79
local kHeaderBytes = 18
local kPacketBytes = 532 -- a whole command packet
local kPayloadBytes = 514
local kQuietestLevel = 19 -- a volume is this less the attenuation
local kNoChange = 255 -- in place of an attenuation
local kPriorityBase = 256 -- priorities travel as this less the priority
local kAnswerWaitS = 4 -- a request that has waited longer is given up
local kUnknown = "?" -- stands in texts for what was not captured

------------------------------------------------------------------------------------------------------ preferences

local kDefaultCommandPorts = "28001,29001"
local kDefaultAudioPorts = "28100,29002"
local kIntercomPort = 29002
local kHighestPort = 65535

k740.prefs.command_ports = Pref.range("Ports of command packets", kDefaultCommandPorts,
    "UDP ports on which devices and hosts take requests and answers", kHighestPort)
k740.prefs.audio_ports = Pref.range("Ports of audio", kDefaultAudioPorts,
    "UDP ports of multicast and intercom audio", kHighestPort)
k740.prefs.heuristics = Pref.bool("Recognise the protocol on other ports", true,
    "Take every UDP datagram that has the magic, a known code or type and its exact length")

------------------------------------------------------------------------------------------------------ names

local kDeviceKinds = {
    { 1, 999, "zone controller" },
    { 5000, 5999, "paging station or intercom" },
    { 7000, 7999, "AUX interface" },
    { 9500, 9999, "host" },
}
local kNoYes = { [0] = "no", [1] = "yes" }
local kStopStart = { [0] = "stop", [1] = "start" }
local kPlayResults = { [1] = "accepted", [255] = "accepted without a join report" }
local kJoinResults = { [1] = "joined" }
local kStationResults = { [1] = "success" }
local kExtensionResults = { [0] = "not found", [1] = "done" }
local kCallAnswers = { [0] = "rings", [1] = "accepted", [2] = "hung up or busy" }
local kTalkStates = { [0] = "rings", [1] = "talks", [2] = "idle" }
local kStationStates = { [255] = "off line" }
local kControllerStates = { [255] = "off line" }
local kZoneStates = { [4] = "idle", [5] = "playing" }

local function is_device(id, kind)
    local low, high = kDeviceKinds[kind][1], kDeviceKinds[kind][2]
    return type(id) == "number" and id >= low and id <= high
end
local function is_station(id) return is_device(id, 2) end
local function is_host(id) return is_device(id, 4) end

--- The set bits of a mask as zones: "1-3,8"; "none".
local function zones_text(mask)
    if type(mask) ~= "number" then return kUnknown end
    local parts, first = {}, nil
    for zone = 1, 33 do
        local set = zone <= 32 and math.floor(mask / 2 ^ (zone - 1)) % 2 == 1
        if set and not first then first = zone end
        if not set and first then
            local last = zone - 1
            parts[#parts + 1] = last > first and first .. "-" .. last or tostring(first)
            first = nil
        end
    end
    return #parts > 0 and table.concat(parts, ",") or "none"
end

--- What a wire attenuation means to a host: "19" (loudest) to "0"; "-" for a channel that is not touched or not there.
local function level_text(attenuation)
    if type(attenuation) ~= "number" then return kUnknown end
    return attenuation == kNoChange and "-" or tostring(kQuietestLevel - attenuation)
end

------------------------------------------------------------------------------------------------------ fields

-- A record is a list of items: where each lies in the payload, and how it is read and shown. The field of an item is
-- made together with it, once for each name.
local fields = {}

local function proto_field(kind, name, ...)
    fields[name] = fields[name] or ProtoField[kind]("k740." .. name, ...)
    return fields[name]
end

--- @param options  values: names of values; ranges: names of ranges; hex: shown as hexadecimal; signed; label: said
---                 before the item; list: one of several of its name
local function number(at, bytes, name, title, options)
    options = options or {}
    local display = options.hex and base.HEX or base.DEC
    if options.ranges then display = base.RANGE_STRING end
    local kind = (options.signed and "int" or "uint") .. bytes * 8
    return {
        at = at, bytes = bytes, name = name, label = options.label, list = options.list,
        field = proto_field(kind, name, title, display, options.values or options.ranges),
        read = function(range) return options.signed and range:le_int() or range:le_uint() end,
    }
end

local function device_id(at, name, title)
    return number(at, 4, name, title, { ranges = kDeviceKinds })
end

local function zone_mask(at, bytes, name, title)
    local item = number(at, bytes, name, title, { hex = true })
    item.explain = function(mask) return " (" .. zones_text(mask) .. ")" end
    return item
end

--- Priorities are shown as hosts say them.
local function priority(at, name)
    return {
        at = at, bytes = 2, name = name, computed = true, field = proto_field("int32", name, "Priority", base.DEC),
        read = function(range) return kPriorityBase - range:le_uint() end,
        explain = function(value) return string.format(" (%d on the wire)", kPriorityBase - value) end,
    }
end

local function attenuation(at, channel)
    local item = number(at, 1, "volume.attenuation", "Attenuation",
        { label = channel and "Channel " .. channel .. ": ", list = true })
    item.under = function(tree, range, value)
        if value ~= kNoChange then
            tree:add(fields["volume.level"], range, kQuietestLevel - value):set_generated()
        end
    end
    item.explain = function(value) return value == kNoChange and " (unchanged, or no such channel)" or "" end
    return item
end
proto_field("int32", "volume.level", "Volume as hosts say it, 0 quiet to 19 loud", base.DEC)

--- An IPv4 group; its number travels little-endian, so that the last number comes first.
local function group(at, name, title, options)
    options = options or {}
    return {
        at = at, bytes = 4, name = name, label = options.label, list = options.list,
        field = proto_field("ipv4", name, title),
        read = function(range) return tostring(range:le_ipv4()) end,
    }
end

local function bytes(at, count, name, title)
    return { at = at, bytes = count, name = name, field = proto_field("bytes", name, title or "Reserved") }
end
local function reserved(at, count) return bytes(at, count, "reserved", "Reserved") end

--- A text that ends with a zero, or with its place.
local function text(at, count, name, title)
    return {
        at = at, bytes = count, name = name, field = proto_field("string", name, title),
        read = function(range) return (range:raw():match("^[^\0]*"):gsub("[^\32-\126]", "?")) end,
        computed = true,
    }
end

--- @return one item for each number from 1 to count, made by make(number)
local function each(count, make)
    local items = {}
    for i = 1, count do items[i] = make(i) end
    return items
end

--- Joins items and lists of items into one record.
local function record(parts)
    local items = {}
    for _, part in ipairs(parts) do
        if part.field then part = { part } end
        for _, item in ipairs(part) do items[#items + 1] = item end
    end
    return items
end

local function add_item(tree, item, range)
    local value = item.read and item.read(range)
    local node
    if item.computed then
        node = tree:add(item.field, range, value)
    else
        node = tree:add_le(item.field, range)
    end
    if item.label then node:prepend_text(item.label) end
    if item.explain then node:append_text(item.explain(value)) end
    if item.under then item.under(node, range, value) end
    return value
end

--- Adds what was captured of a record.
--- @param start  of the record in the datagram, bytes
--- @return       values by name, a list of them for those that come several times; "?" for what is not there
local function add_record(tree, items, tvb, start)
    local values = setmetatable({}, { __index = function() return kUnknown end })
    for _, item in ipairs(items) do
        if start + item.at + item.bytes <= tvb:len() then
            local value = add_item(tree, item, tvb(start + item.at, item.bytes))
            if item.list then
                local list = rawget(values, item.name) or {}
                list[#list + 1] = value
                values[item.name] = list
            elseif value ~= nil then
                values[item.name] = value
            end
        end
    end
    return values
end

------------------------------------------------------------------------------------------------------ expert infos

local function expert_info(name, title, group_of, severity)
    return ProtoExpert.new("k740.expert." .. name, title, group_of, severity)
end
local kMalformed, kError, kWarn, kNote =
    expert.group.MALFORMED, expert.severity.ERROR, expert.severity.WARN, expert.severity.NOTE
local experts = {
    magic = expert_info("magic", "The magic is not 0x4A79", expert.group.PROTOCOL, kWarn),
    unknown_code = expert_info("unknown_code", "Unknown command code", expert.group.UNDECODED, kWarn),
    unknown_type = expert_info("unknown_type", "Unknown type of audio", expert.group.UNDECODED, kWarn),
    short = expert_info("short", "The datagram is too short", kMalformed, kError),
    trailing = expert_info("trailing", "Bytes beyond the end", kMalformed, kWarn),
    unused = expert_info("unused", "Unused payload bytes are not zero", kMalformed, kWarn),
    length_field = expert_info("length_field", "The length field is wrong", kMalformed, kWarn),
    coder_index = expert_info("coder_index", "Step index of the coder above 88", kMalformed, kWarn),
    refused = expert_info("refused", "Refused", expert.group.RESPONSE_CODE, kNote),
    repeated = expert_info("repeated", "The request was answered before", expert.group.SEQUENCE, kNote),
}
k740.experts = experts

------------------------------------------------------------------------------------------------------ commands

-- By code; a function chooses by sender and receiver. name; record; size: bytes of payload in use, nil: not laid
-- down; info(values, header): what the Info column says behind the name; refused(values); match(values): what ties an
-- answer to its request beside the devices; closes(values): no further answer belongs to the request.
local commands = {}

local function volumes_text(values)
    local list = rawget(values, "volume.attenuation") or {}
    local levels = {}
    for i, value in ipairs(list) do levels[i] = level_text(value) end
    return #levels > 0 and ": " .. table.concat(levels, " ") or ""
end

local function name_of(names, value, other)
    return names[value] or (other or "value") .. " " .. value
end

commands[0x0101] = {
    name = "Close audio", size = 8,
    record = record { number(0, 4, "close_audio.task", "Task"), number(4, 4, "close_audio.kind", "Kind") },
    info = function(v) return ", task " .. v["close_audio.task"] end,
}
commands[0x0102] = {
    name = "Close zones", size = 12,
    record = record { zone_mask(0, 4, "close_zones.zones", "Zones"), reserved(4, 8) },
    info = function(v) return ", zones " .. zones_text(v["close_zones.zones"]) end,
}

commands[0x0109] = {
    name = "Set volume (V2)", size = 2,
    record = record { number(0, 1, "volume.channel", "Channel, 0 to 3"), attenuation(1) },
    info = function(v)
        local level = rawget(v, "volume.attenuation")
        return ", channel " .. v["volume.channel"] .. ", volume " .. level_text(level and level[1])
    end,
}
commands[0x8109] = { name = "Set volume (V2) answer" }
commands[0x0127] = { name = "Read volumes (V2)", size = 0 }
commands[0x8127] = {
    name = "Volumes (V2)", size = 7,
    record = record {
        number(0, 1, "volume.valid", "Valid", { values = kNoYes }),
        each(4, function(i) return attenuation(i, i) end),
        bytes(5, 2, "volume.extra", "Not interpreted"),
    },
    info = volumes_text,
}
commands[0x0301] = {
    name = "Set volumes (V3)", size = 11,
    record = record { each(8, function(i) return attenuation(i - 1, i) end), bytes(8, 3, "volume.unused", "255 each") },
    info = volumes_text,
}
commands[0x8301] = { name = "Set volumes (V3) answer" }
commands[0x0302] = { name = "Read volumes (V3)", size = 0 }
commands[0x8302] = {
    name = "Volumes (V3)", size = 12,
    record = record {
        number(0, 1, "volume.valid", "Valid", { values = kNoYes }),
        each(10, function(i) return attenuation(i, i) end),
        bytes(11, 1, "volume.extra", "Not interpreted"),
    },
    info = volumes_text,
}

local emergency = record { device_id(0, "voice_alarm.host", "Host"), priority(4, "voice_alarm.priority") }
local function emergency_info(v) return ", priority " .. v["voice_alarm.priority"] end
commands[0x0123] = { name = "Voice alarm on", size = 6, record = emergency, info = emergency_info }
commands[0x0124] = { name = "Voice alarm off", size = 6, record = emergency, info = emergency_info }

commands[0x0125] = {
    name = "Heartbeat", size = 4,
    record = record { device_id(0, "heartbeat.host", "Host") },
}
commands[0x8125] = {
    name = "Heartbeat answer", size = 6,
    record = record {
        number(0, 1, "heartbeat.result", "Result, 1"),
        reserved(1, 1),
        device_id(2, "heartbeat.controller", "Controller"),
    },
}

--- @return items for one byte of each zone or amplifier
local function states(at, count, name, title, what, values, first)
    return each(count, function(i)
        local label = what .. " " .. (first or 1) + i - 1 .. ": "
        return number(at + i - 1, 1, name, title, { label = label, values = values, list = true })
    end)
end

local function zone_numbers(v, wanted)
    local mask = 0
    for i, state in ipairs(rawget(v, "status.zone") or {}) do
        if state == wanted then mask = mask + 2 ^ (i - 1) end
    end
    return mask
end

commands[0x8126] = {
    name = "Status", size = 85,
    record = record {
        number(0, 1, "status.device", "Device", { values = kControllerStates }),
        states(1, 8, "status.zone", "State", "Zone", kZoneStates),
        states(9, 4, "status.amplifier", "State", "Amplifier"),
        device_id(13, "status.controller", "Controller"),
        number(17, 1, "status.fault", "Fault"),
        each(8, function(i)
            local label = "Zone " .. i .. ": "
            return number(14 + 4 * i, 2, "status.zone_task", "Task", { label = label, list = true })
        end),
        each(8, function(i)
            local label = "Zone " .. i .. ": "
            return number(16 + 4 * i, 2, "status.zone_source", "Source", { label = label, list = true })
        end),
        bytes(50, 7, "status.bytes50", "Not interpreted"),
        zone_mask(57, 1, "status.zone_faults", "Zones with a fault"),
        number(58, 1, "status.extra_a", "First extra byte"),
        number(59, 1, "status.extra_b", "Second extra byte"),
        states(60, 4, "status.amplifier", "State", "Amplifier", nil, 5),
        bytes(64, 16, "status.bytes64", "Not interpreted"),
        number(80, 4, "status.word80", "Not interpreted"),
        number(84, 1, "status.byte84", "Not interpreted"),
    },
    info = function(v)
        local faults = v["status.zone_faults"]
        return ", device " .. name_of(kControllerStates, v["status.device"], "state") ..
            ", playing zones " .. zones_text(zone_numbers(v, 5)) ..
            (v["status.fault"] ~= 0 and ", fault " .. v["status.fault"] or "") ..
            (faults ~= 0 and ", faulty zones " .. zones_text(faults) or "")
    end,
}

commands[0x0132] = {
    name = "Read version", size = 4,
    record = record { device_id(0, "version.device", "Device") },
    info = function(v) return ", device " .. v["version.device"] end,
}
commands[0x8132] = {
    name = "Version", size = 118,
    record = record {
        bytes(0, 24, "version.bytes0", "Not interpreted"),
        text(24, 12, "version.kernel", "Kernel"),
        text(36, 48, "version.application", "Application"),
        text(84, 28, "version.mcu", "MCU"),
        number(112, 4, "version.word112", "Not interpreted"),
        number(116, 2, "version.device_low", "Low half of the device's ID"),
    },
    info = function(v)
        return ", application " .. v["version.application"] .. ", MCU " .. v["version.mcu"] ..
            ", kernel " .. v["version.kernel"]
    end,
}

local function play_match(v) return v["play.sequence"] .. "/" .. v["play.task"] end
local function is_aux(v) return not is_host(v["play.sender"]) end

commands[0x0205] = {
    name = "Play request", size = 66, match = play_match,
    record = record {
        number(0, 2, "play.sequence", "Sequence"),
        reserved(2, 2),
        priority(4, "play.priority"),
        number(6, 1, "play.contact_switch", "Switch contacts", { values = kNoYes }),
        number(7, 1, "play.contact_on", "Contacts on", { values = kNoYes }),
        zone_mask(8, 1, "play.contact_zones", "Zones whose contacts are switched"),
        number(9, 4, "play.word9", "Repeated by the answer"),
        number(13, 4, "play.source", "AUX port of an AUX device, otherwise the task", { signed = true }),
        number(17, 4, "play.task", "Task"),
        number(21, 4, "play.kind", "Kind"),
        number(25, 1, "play.recovery", "Return afterwards to what was played before", { values = kNoYes }),
        reserved(26, 3),
        number(29, 2, "play.all", "All", { hex = true }),
        reserved(31, 7),
        zone_mask(38, 4, "play.zones", "Zones"),
        reserved(42, 8),
        number(50, 4, "play.stream_kind", "Kind of stream"),
        group(54, "play.group", "Group"),
        number(58, 4, "play.port", "Port"),
        device_id(62, "play.sender", "Sending device"),
    },
    info = function(v)
        local aux = is_aux(v) and ", AUX " .. v["play.sender"] .. " port " .. v["play.source"] or ""
        return ", task " .. v["play.task"] .. aux .. ", zones " .. zones_text(v["play.zones"]) .. ", " ..
            v["play.group"] .. ":" .. v["play.port"] .. ", priority " .. v["play.priority"]
    end,
}
commands[0x8205] = {
    name = "Play answer", size = 29, match = play_match,
    record = record {
        number(0, 1, "play.join_follows", "Join report follows", { values = kNoYes }),
        number(1, 2, "play.result", "Result", { values = kPlayResults }),
        number(3, 2, "play.sequence", "Sequence"),
        number(5, 4, "play.token_a", "Token A", { hex = true }),
        number(9, 4, "play.token_b", "Token B", { hex = true }),
        bytes(13, 8, "play.echo", "Bytes 9 to 16 of the request"),
        number(21, 4, "play.task", "Task"),
        bytes(25, 4, "play.trailing", "Bytes 21 to 24 of the request"),
    },
    refused = function(v) return not kPlayResults[v["play.result"]] end,
    info = function(v)
        local joins = v["play.result"] == 1 and v["play.join_follows"] ~= 0 and ", join report follows" or ""
        return ", task " .. v["play.task"] .. ", " .. name_of(kPlayResults, v["play.result"], "refused with") .. joins
    end,
}
commands[0x8206] = {
    name = "Join report", size = 26,
    record = record {
        number(0, 2, "play.join", "Status", { values = kJoinResults }),
        number(2, 4, "play.token_a", "Token A", { hex = true }),
        number(6, 4, "play.token_b", "Token B", { hex = true }),
        bytes(10, 8, "play.echo", "Bytes 9 to 16 of the request"),
        number(18, 4, "play.join_task", "Task, from virtual controllers"),
        bytes(22, 4, "play.trailing", "Bytes 21 to 24 of the request"),
    },
    refused = function(v) return v["play.join"] ~= 1 end,
    info = function(v) return ", " .. name_of(kJoinResults, v["play.join"], "not joined, status") end,
}

-- Zone controllers send eight entries and a byte, virtual ones a 1 and eight entries, of which they use the first.
local function group_entries(start)
    return each(8, function(zone)
        local label = "Zone " .. zone .. ": "
        local at = start + 8 * (zone - 1)
        return record {
            group(at, "groups.group", "Group", { label = label, list = true }),
            number(at + 4, 4, "groups.word", "Port or word", { label = label, list = true }),
        }
    end)
end
local function groups_record(start, rest)
    local items = { rest }
    for _, entry in ipairs(group_entries(start)) do items[#items + 1] = entry end
    return record(items)
end
local hardware_groups = groups_record(0, bytes(64, 1, "groups.extra", "Not interpreted"))
local virtual_groups = groups_record(1, number(0, 1, "groups.valid", "Of a virtual controller"))

local function groups_info(v)
    local parts = {}
    for zone, address in ipairs(rawget(v, "groups.group") or {}) do
        if address ~= "0.0.0.0" then parts[#parts + 1] = "zone " .. zone .. " " .. address end
    end
    return ", " .. (#parts > 0 and table.concat(parts, ", ") or "none")
end
local function is_virtual_groups(tvb)
    local kEntry = kHeaderBytes
    if tvb:len() < kEntry + 4 then return false end
    local first_octet = tvb(kEntry + 3, 1):uint()
    return tvb(kEntry, 1):uint() == 1 and (first_octet < 224 or first_octet > 239)
end
local zone_groups = { name = "Groups of the zones", size = 65, record = hardware_groups, info = groups_info }
local virtual_zone_groups = { name = zone_groups.name, size = 65, record = virtual_groups, info = groups_info }
commands[0x0303] = { name = "Read groups of the zones", size = 0 }
commands[0x8303] = function(_, tvb) return is_virtual_groups(tvb) and virtual_zone_groups or zone_groups end

local function monitored_zone(at)
    proto_field("uint32", "monitor.zone", "Zone", base.DEC)
    return {
        at = at, bytes = 2, name = "monitor.zone", computed = true, field = fields["monitor.zone"],
        read = function(range) return range:le_uint() + 1 end,
        explain = function(zone) return string.format(" (%d on the wire)", zone - 1) end,
    }
end
commands[0x030A] = {
    name = "Monitor a zone", size = 7,
    record = record {
        device_id(0, "monitor.controller", "Controller"),
        monitored_zone(4),
        number(6, 1, "monitor.start", "Start", { values = kStopStart }),
    },
    info = function(v)
        return ", " .. name_of(kStopStart, v["monitor.start"]) .. ", controller " .. v["monitor.controller"] ..
            ", zone " .. v["monitor.zone"]
    end,
}
commands[0x830A] = {
    name = "Monitor answer", size = 2,
    record = record { number(0, 2, "monitor.result", "Result", { signed = true, values = kStationResults }) },
    refused = function(v) return v["monitor.result"] ~= 1 end,
    info = function(v) return ", " .. name_of(kStationResults, v["monitor.result"], "refused with") end,
}

local extension = record { bytes(0, 16, "extension.key", "Key"), bytes(16, 12, "extension.value", "Value") }
local extension_answer = record {
    number(0, 1, "extension.result", "Result", { values = kExtensionResults }),
}
local function extension_info(v) return ", " .. name_of(kExtensionResults, v["extension.result"]) end
commands[0x0313] = { name = "Zones join a task", size = 28, record = extension, any_answerer = true }
commands[0x8313] = {
    name = "Zones join a task answer", size = 1, record = extension_answer, info = extension_info, any_answerer = true,
}
commands[0x0314] = { name = "Zones leave a task", size = 28, record = extension, any_answerer = true }
commands[0x8314] = {
    name = "Zones leave a task answer", size = 1, record = extension_answer, info = extension_info, any_answerer = true,
}

local station_heartbeat = {
    name = "Heartbeat of a station", size = 4,
    record = record { device_id(0, "station.host", "Host") },
}
-- Intercoms share the address of their host, so that only the IDs tell who talks to whom.
local function from_to(_, header) return ", " .. header.source .. " to " .. header.destination end
local handshake = { name = "Handshake with an intercom", info = from_to }
local station_status = {
    name = "Status of a station", size = 9, closes = function() return true end,
    record = record {
        number(0, 1, "station.state", "State", { values = kStationStates }),
        number(1, 1, "station.activity", "Activity"),
        bytes(2, 2, "station.bytes2", "Not interpreted"),
        number(4, 2, "station.word_a", "First word"),
        number(6, 2, "station.word_b", "Second word"),
        number(8, 1, "station.extra", "Extra byte"),
    },
    info = function(v)
        return ", " .. name_of(kStationStates, v["station.state"], "state") .. ", activity " .. v["station.activity"]
    end,
}
local handshake_answer = {
    name = "Handshake answer", size = 9,
    record = record {
        reserved(0, 1),
        number(1, 1, "intercom.status", "Intercom", { values = kTalkStates }),
        reserved(2, 7),
    },
    info = function(v, header)
        return from_to(v, header) .. ", intercom " .. name_of(kTalkStates, v["intercom.status"], "status")
    end,
}
commands[0x0700] = function(header) return is_station(header.source) and handshake or station_heartbeat end
commands[0x8700] = function(header) return is_station(header.destination) and handshake_answer or station_status end

commands[0x0701] = {
    name = "Intercom call", size = 8, info = from_to,
    record = record { bytes(0, 8, "intercom.unused", "Not read") },
}
commands[0x8701] = {
    name = "Intercom answer", size = 9,
    record = record { number(0, 1, "intercom.answer", "Answer", { values = kCallAnswers }), reserved(1, 8) },
    info = function(v, header)
        return from_to(v, header) .. ", " .. name_of(kCallAnswers, v["intercom.answer"])
    end,
    closes = function(v) return v["intercom.answer"] ~= 0 end,
}

--- "02101" is zone 1 of controller 0x021 = 33.
local function paging_zones(zones)
    if #zones % 5 ~= 0 or zones:find("[^0-9A-Fa-f]") then return nil end
    local parts = {}
    for id, mask in zones:gmatch("(...)(..)") do
        parts[#parts + 1] = tonumber(id, 16) .. " zones " .. zones_text(tonumber(mask, 16))
    end
    return table.concat(parts, "; ")
end
local kPagingZonesAt = 26 -- bytes of payload
proto_field("string", "paging_task.zones", "Zones: three digits of the controller, two of its zones")
commands[0x0702] = {
    name = "Task of a station", least = kPagingZonesAt, size = nil,
    record = record {
        number(0, 4, "paging_task.task", "Task"),
        number(4, 1, "paging_task.start", "Start", { values = kStopStart }),
        number(5, 1, "paging_task.priority", "Priority"),
        reserved(6, 20),
    },
    more = function(tree, tvb, length, v)
        local at = kHeaderBytes + kPagingZonesAt
        local count = math.min(length, kPayloadBytes) - kPagingZonesAt
        count = math.min(count, tvb:len() - at)
        if count <= 0 then return end
        local zones = tvb(at, count):raw()
        local node = tree:add(fields["paging_task.zones"], tvb(at, count))
        local meaning = paging_zones(zones)
        if meaning then node:append_text(" (" .. meaning .. ")") end
        v["paging_task.zones"] = meaning or "?"
    end,
    info = function(v)
        local zones = rawget(v, "paging_task.zones")
        return ", " .. name_of(kStopStart, v["paging_task.start"]) .. " " .. v["paging_task.task"] ..
            ", priority " .. v["paging_task.priority"] .. (zones and ", " .. zones or "")
    end,
}
commands[0x8702] = {
    name = "Task answer of a station", size = 6,
    record = record {
        number(0, 4, "paging_task.echo", "Echo"),
        number(4, 2, "paging_task.result", "Result", { values = kStationResults }),
    },
    refused = function(v) return v["paging_task.result"] ~= 1 end,
    info = function(v) return ", " .. name_of(kStationResults, v["paging_task.result"], "refused with") end,
}

local kCommandNames = {}
for code, command in pairs(commands) do
    if type(command) == "table" then kCommandNames[code] = command.name end
end
kCommandNames[0x0700] = "Heartbeat of a station, handshake with an intercom"
kCommandNames[0x8700] = "Status of a station, handshake answer"
kCommandNames[0x8303] = zone_groups.name

------------------------------------------------------------------------------------------------------ audio types

local kSampleRateHz = 44100
local kTrailerBytes = 10 -- state of the coder and four bytes
local kHighestStepIndex = 88
local kEndOfStream = 0x8112
local kEndOfStreamBytes = { [1052] = true, [540] = true }

local function audio_kind(name, payload, samples)
    return { name = name, payload = payload, samples = samples, is_adpcm = name ~= "PCM" }
end
local two_channel = audio_kind("two-channel ADPCM", 1024, 2048)
local mono = audio_kind("mono ADPCM", 1024, 2048)
local short_mono = audio_kind("mono ADPCM", 441, 882)
local double_mono = audio_kind("mono ADPCM", 882, 1764)
local pcm = audio_kind("PCM", 4096, 2048)
local short_pcm = audio_kind("PCM", 1764, 882)
local double_pcm = audio_kind("PCM", 3528, 1764)
local audio_kinds = {
    [341] = two_channel, [342] = two_channel,
    [343] = mono, [344] = mono,
    [345] = short_mono, [352] = short_mono,
    [353] = double_pcm,
    [354] = pcm, [356] = pcm,
    [355] = short_pcm, [357] = short_pcm,
    [359] = double_mono, [360] = double_mono,
}
local kAudioNames = { [kEndOfStream] = "end of stream" }
for type_number, kind in pairs(audio_kinds) do kAudioNames[type_number] = kind.name end

------------------------------------------------------------------------------------------------------ links

local fields_of_links = {
    answered_in = proto_field("framenum", "answered_in", "Answered in", base.NONE, frametype.RESPONSE),
    joined_in = proto_field("framenum", "joined_in", "Joined in", base.NONE, frametype.RESPONSE),
    answer_to = proto_field("framenum", "answer_to", "Answer to", base.NONE, frametype.REQUEST),
    response_time = proto_field("relative_time", "response_time", "Time since the request"),
}

-- Noted while a capture is read for the first time. An entry is one request: frame, seconds, answers, joins.
local pending = {}  -- by what request and answer have in common: entries, the oldest first
local promised = {} -- by controller and tokens: the entry whose join report is to come
local entries = {}  -- by the request's frame
local links = {}    -- by the answer's frame: entry, whether the request was answered before

function k740.init()
    pending, promised, entries, links = {}, {}, {}, {}
end

local function key_of(request_code, requester, answerer, command, values)
    return table.concat({
        request_code, tostring(requester.address), tostring(answerer.address), requester.id,
        command.any_answerer and "any" or answerer.id, command.match and command.match(values) or "",
    }, " ")
end

local function token_key(controller, values)
    return controller .. " " .. values["play.token_a"] .. " " .. values["play.token_b"]
end

local function is_waiting(entry, now)
    return #entry.answers == 0 and now - entry.time <= kAnswerWaitS
end

local function note_request(key, pinfo)
    local entry = { frame = pinfo.number, time = pinfo.rel_ts, answers = {}, joins = {} }
    entries[pinfo.number] = entry
    local waiting = {}
    for _, earlier in ipairs(pending[key] or {}) do
        if is_waiting(earlier, pinfo.rel_ts) then waiting[#waiting + 1] = earlier end
    end
    waiting[#waiting + 1] = entry
    pending[key] = waiting
end

--- Several threads of a host may ask the same at once; the device answers them in their order.
--- @return the oldest request that still waits, else the newest one
local function request_for(key, now)
    local requests = pending[key]
    if not requests then return nil end
    for _, entry in ipairs(requests) do
        if is_waiting(entry, now) then return entry end
    end
    return requests[#requests]
end

local function note_answer(key, command, values, header, pinfo)
    local entry = request_for(key, pinfo.rel_ts)
    if not entry then return end
    links[pinfo.number] = { entry = entry, repeated = #entry.answers > 0 and not command.closes }
    table.insert(entry.answers, pinfo.number)
    if command.closes and command.closes(values) then pending[key] = nil end
    if header.code == 0x8205 then promised[token_key(header.source, values)] = entry end
end

local function note_join(values, header, pinfo)
    local entry = promised[token_key(header.source, values)]
    if not entry then return end
    links[pinfo.number] = { entry = entry, repeated = #entry.joins > 0 }
    table.insert(entry.joins, pinfo.number)
end

local function note(command, values, header, pinfo)
    local sender = { address = pinfo.src, id = header.source }
    local receiver = { address = pinfo.dst, id = header.destination }
    if header.code == 0x8206 then return note_join(values, header, pinfo) end
    if header.code < 0x8000 then
        note_request(key_of(header.code, sender, receiver, command, values), pinfo)
    else
        note_answer(key_of(header.code - 0x8000, receiver, sender, command, values), command, values, header, pinfo)
    end
end

local function add_links(tree, pinfo)
    local entry, link = entries[pinfo.number], links[pinfo.number]
    for _, frame in ipairs(entry and entry.answers or {}) do
        tree:add(fields_of_links.answered_in, frame):set_generated()
    end
    for _, frame in ipairs(entry and entry.joins or {}) do
        tree:add(fields_of_links.joined_in, frame):set_generated()
    end
    if not link then return end
    tree:add(fields_of_links.answer_to, link.entry.frame):set_generated()
    local seconds, fraction = math.modf(pinfo.rel_ts - link.entry.time)
    tree:add(fields_of_links.response_time, NSTime.new(seconds, math.floor(fraction * 1e9 + 0.5))):set_generated()
    if link.repeated then tree:add_proto_expert_info(experts.repeated) end
end

------------------------------------------------------------------------------------------------------ packets

local magic = number(0, 2, "magic", "Magic", { hex = true })
local source = device_id(6, "source", "Source")
local destination = device_id(10, "destination", "Destination")

local command_header = record {
    magic,
    number(2, 1, "version", "Version"),
    reserved(3, 3),
    source,
    destination,
    number(14, 2, "command", "Command", { hex = true, values = kCommandNames }),
    number(16, 2, "length", "Payload bytes in use"),
}
local audio_header = record {
    magic,
    reserved(2, 4),
    source,
    number(10, 4, "audio.stream", "Stream"),
    number(14, 2, "audio.type", "Type", { values = kAudioNames }),
    number(16, 2, "audio.length", "Nominal length"),
}
local coder_state = record {
    number(0, 2, "audio.value_a", "Coder value A", { signed = true }),
    number(2, 2, "audio.value_b", "Coder value B", { signed = true }),
    number(4, 1, "audio.index_a", "Coder index A"),
    number(5, 1, "audio.index_b", "Coder index B"),
    reserved(6, 4),
}
local own_fields = {
    audio = proto_field("none", "audio", "Audio"),
    audio_payload = proto_field("bytes", "audio.payload", "Payload"),
    samples = proto_field("uint32", "audio.samples", "Samples, 44.1 kHz", base.DEC),
    duration = proto_field("double", "audio.duration", "Duration in ms"),
    payload = proto_field("none", "payload", "Payload"),
    undecoded = proto_field("bytes", "undecoded", "Undecoded"),
    trailing = proto_field("bytes", "trailing", "Trailing"),
}

local function code_at(tvb)
    return tvb:len() >= 16 and tvb(14, 2):le_uint() or nil
end

local function check_magic(tree, values)
    if values.magic ~= kMagic then tree:add_proto_expert_info(experts.magic) end
end

--- Marks a datagram that is shorter or longer than it must be; what the capture cut off counts as there.
local function check_size(tree, tvb, expected, pinfo)
    local size = tvb:reported_len()
    if size < expected and not pinfo.in_error_pkt then
        tree:add_proto_expert_info(experts.short, string.format("The datagram has %d bytes, not %d", size, expected))
    elseif size > expected then
        if tvb:len() > expected then tree:add(own_fields.trailing, tvb(expected)) end
        tree:add_proto_expert_info(experts.trailing, string.format("%d bytes beyond the end", size - expected))
    end
end

local function check_length_field(tree, command, length)
    if length == kUnknown then return end
    local wrong = length > kPayloadBytes or (command.least and length < command.least) or
        (command.size and length ~= command.size)
    if not wrong then return end
    local expected = command.size or (command.least or 0) .. " to " .. kPayloadBytes
    tree:add_proto_expert_info(experts.length_field,
        string.format("The length field says %d bytes; this code has %s", length, expected))
end

--- Bytes of the payload behind what its length field and its code lay down must be zero.
local function check_unused(tree, tvb, used)
    local from = kHeaderBytes + math.min(used, kPayloadBytes)
    local to = math.min(tvb:len(), kPacketBytes)
    if from < to and tvb(from, to - from):raw():find("[^\0]") then
        tree:add_proto_expert_info(experts.unused)
    end
end

local function add_unknown_payload(tree, tvb, length)
    local count = math.min(tvb:len() - kHeaderBytes, length == kUnknown and 0 or length, kPayloadBytes)
    if count > 0 then tree:add(own_fields.undecoded, tvb(kHeaderBytes, count)) end
end

local function say(pinfo, protocol, info)
    pinfo.cols.protocol = protocol
    pinfo.cols.info = info
end

local function code_text(code)
    return type(code) == "number" and string.format("0x%04X", code) or kUnknown
end

local function dissect_unknown_command(tree, tvb, pinfo, header)
    tree:add_proto_expert_info(experts.unknown_code, "Unknown command code " .. code_text(header.command))
    add_unknown_payload(tree, tvb, header.length)
    check_length_field(tree, {}, header.length)
    say(pinfo, "K740", "Unknown code " .. code_text(header.command))
end

local function dissect_command(tvb, pinfo, tree)
    local header = add_record(tree, command_header, tvb, 0)
    header.code = header.command
    check_magic(tree, header)
    check_size(tree, tvb, kPacketBytes, pinfo)
    local command = commands[header.command]
    if type(command) == "function" then command = command(header, tvb) end
    if not command then return dissect_unknown_command(tree, tvb, pinfo, header) end

    local values = setmetatable({}, getmetatable(header))
    local start = math.min(kHeaderBytes, tvb:len())
    if command.record and start < tvb:len() then
        local branch = tree:add(own_fields.payload, tvb(start, math.min(tvb:len() - start, kPayloadBytes)))
        branch:set_text(command.name)
        values = add_record(branch, command.record, tvb, kHeaderBytes)
        if command.more and header.length ~= kUnknown then command.more(branch, tvb, header.length, values) end
    else
        add_unknown_payload(tree, tvb, header.length)
    end
    if header.length ~= kUnknown then
        check_length_field(tree, command, header.length)
        check_unused(tree, tvb, math.max(header.length, command.size or 0))
    end
    if command.refused and command.refused(values) then tree:add_proto_expert_info(experts.refused) end
    if not pinfo.in_error_pkt then
        if not pinfo.visited then note(command, values, header, pinfo) end
        add_links(tree, pinfo)
    end
    say(pinfo, "K740", command.name .. (command.info and command.info(values, header) or ""))
end

local function add_coder_state(tree, tvb, kind)
    local at = kHeaderBytes + kind.payload
    local state = add_record(tree, coder_state, tvb, at)
    for _, name in ipairs { "audio.index_a", "audio.index_b" } do
        local index = rawget(state, name)
        if index and index > kHighestStepIndex then tree:add_proto_expert_info(experts.coder_index) end
    end
end

local function dissect_sound(tvb, pinfo, tree, kind, header)
    local count = math.min(kind.payload, tvb:len() - kHeaderBytes)
    local duration = kind.samples * 1000 / kSampleRateHz
    if count > 0 then tree:add(own_fields.audio_payload, tvb(kHeaderBytes, count)) end
    tree:add(own_fields.samples, kind.samples):set_generated()
    tree:add(own_fields.duration, duration):set_generated()
    add_coder_state(tree, tvb, kind)
    check_size(tree, tvb, kHeaderBytes + kind.payload + kTrailerBytes, pinfo)
    local stream = header["audio.stream"]
    local is_intercom = pinfo.dst_port == kIntercomPort and is_station(stream)
    if is_intercom then tree:add(destination.field, tvb(10, 4), stream):set_generated() end
    say(pinfo, "K740 Audio", string.format("Audio from %s%s, %s, %d samples, %.1f ms", header.source,
        is_intercom and " to " .. stream or "", kind.name, kind.samples, duration))
end

local function dissect_end_of_stream(tvb, pinfo, tree, header)
    local controller = header["audio.stream"]
    if controller ~= kUnknown then tree:add(destination.field, tvb(10, 4), controller):set_generated() end
    if not kEndOfStreamBytes[tvb:reported_len()] then
        local expected = header["audio.length"] == 520 and 540 or 1052
        check_size(tree, tvb, expected, pinfo)
    end
    say(pinfo, "K740 Audio", string.format("End of stream from %s for controller %s", header.source, controller))
end

local function dissect_unknown_audio(tvb, pinfo, tree, type_number)
    tree:add_proto_expert_info(experts.unknown_type, "Unknown type of audio " .. type_number)
    if tvb:len() > kHeaderBytes then tree:add(own_fields.undecoded, tvb(kHeaderBytes)) end
    say(pinfo, "K740 Audio", "Unknown type of audio " .. type_number)
end

local function dissect_audio(tvb, pinfo, tree)
    local branch = tree:add(own_fields.audio, tvb())
    local header = add_record(branch, audio_header, tvb, 0)
    check_magic(branch, header)
    local type_number = header["audio.type"]
    if type_number == kEndOfStream then return dissect_end_of_stream(tvb, pinfo, branch, header) end
    local kind = audio_kinds[type_number]
    if kind then return dissect_sound(tvb, pinfo, branch, kind, header) end
    if tvb:reported_len() < kHeaderBytes then check_size(branch, tvb, kHeaderBytes, pinfo) end
    dissect_unknown_audio(tvb, pinfo, branch, type_number)
end

------------------------------------------------------------------------------------------------------ entrance

local command_ports, audio_ports = {}, {}

local function parse_ports(list)
    local ports = {}
    for part in tostring(list):gmatch("[^,%s]+") do
        local first, last = part:match("^(%d+)%-?(%d*)$")
        first = tonumber(first)
        for port = first or 1, tonumber(last) or first or 0 do ports[port] = true end
    end
    return ports
end

--- Both kinds have a header of the same layout, so that where the port says nothing the code decides.
local function is_command(tvb, pinfo)
    if command_ports[pinfo.dst_port] then return true end
    if audio_ports[pinfo.dst_port] then return false end
    local code = code_at(tvb)
    if kAudioNames[code] then return false end
    return commands[code] ~= nil or tvb:reported_len() == kPacketBytes
end

function k740.dissector(tvb, pinfo, tree)
    if tvb:len() == 0 then return 0 end
    local subtree = tree:add(k740, tvb())
    if is_command(tvb, pinfo) then
        dissect_command(tvb, pinfo, subtree)
    else
        dissect_audio(tvb, pinfo, subtree)
    end
    return tvb:len()
end

local function has_exact_size(code, size)
    if commands[code] then return size == kPacketBytes end
    if code == kEndOfStream then return kEndOfStreamBytes[size] or false end
    local kind = audio_kinds[code]
    return kind ~= nil and size == kHeaderBytes + kind.payload + kTrailerBytes
end

local function heuristic(tvb, pinfo, tree)
    if not k740.prefs.heuristics or tvb:len() < kHeaderBytes then return false end
    if tvb(0, 2):le_uint() ~= kMagic or not has_exact_size(code_at(tvb), tvb:reported_len()) then return false end
    k740.dissector(tvb, pinfo, tree)
    return true
end

k740.fields = fields
k740:register_heuristic("udp", heuristic)

local udp_ports = DissectorTable.get("udp.port")
local listened = {} -- ranges that the dissector is registered for

local function apply_ports()
    for _, range in ipairs(listened) do udp_ports:remove(range, k740) end
    listened = {}
    for _, range in ipairs { k740.prefs.command_ports, k740.prefs.audio_ports } do
        if tostring(range) ~= "" then
            udp_ports:add(tostring(range), k740)
            listened[#listened + 1] = tostring(range)
        end
    end
    command_ports = parse_ports(k740.prefs.command_ports)
    audio_ports = parse_ports(k740.prefs.audio_ports)
end
apply_ports()
k740.prefs_changed = apply_ports
