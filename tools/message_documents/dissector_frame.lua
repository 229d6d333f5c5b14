
-- The rest is the same for every catalogue: the record around a message, and how fields are read.
local bus = Proto("dtvbus", "DTV bus")

local kinds = { [0] = "message", "connected", "disconnected", "refused", "section_queued", "section_dropped", "lost" }
local record = {
    version = ProtoField.uint8("dtvbus.record.version", "version"),
    kind = ProtoField.uint8("dtvbus.record.kind", "kind", base.DEC, kinds),
    direction = ProtoField.uint8("dtvbus.record.direction", "direction", base.DEC,
        { [0] = "to the service", [1] = "to the browser" }),
    side = ProtoField.uint8("dtvbus.record.side", "seen by", base.DEC, { [0] = "service", [1] = "browser" }),
    browser = ProtoField.uint32("dtvbus.record.browser", "browser"),
    process = ProtoField.uint32("dtvbus.record.process", "process"),
    identifier = ProtoField.uint32("dtvbus.record.identifier", "identifier", base.HEX),
    result = ProtoField.int32("dtvbus.record.result", "result"),
    count = ProtoField.uint32("dtvbus.record.count", "lost records"),
    program = ProtoField.string("dtvbus.record.program", "program"),
    text = ProtoField.string("dtvbus.record.text", "text"),
    operation = ProtoField.string("dtvbus.operation", "operation"),
    section = ProtoField.bytes("dtvbus.section", "section"),
}
local unreadable = ProtoExpert.new("dtvbus.unreadable", "unreadable", expert.group.MALFORMED, expert.severity.ERROR)

bus.experts = { unreadable }
bus.fields = {}
for _, field in pairs(record) do
    table.insert(bus.fields, field)
end
for _, field in pairs(fields) do
    table.insert(bus.fields, field)
end

local header_size = 28
local section_dissector = Dissector.get("mpeg_sect")

local function add_section(range, pinfo, tree)
    if section_dissector and range:len() > 0 then
        section_dissector:call(range:tvb(), pinfo, tree)
    end
end

local function add_number(tree, place, range)
    local name, kind = place[1], place[3]
    local value
    if range:len() == 8 then
        value = range:uint64()
    elseif kind == "signed" then
        value = range:int()
    else
        value = range:uint()
    end
    if wide[name] then
        value = Int64.new(value)
    end
    local item = tree:add(fields[name], range, value)
    local label = names[name] and names[name][tonumber(tostring(value))]
    if label then
        item:append_text(" (" .. label .. ")")
    end
end

local function add_carrier(tree, place, range, pinfo)
    tree:add(fields[place[1]], range)
    if place[4] == "section" then
        add_section(range, pinfo, tree)
    end
end

local function add_message(tree, message, image, pinfo)
    if image:len() < message.size then
        tree:add_proto_expert_info(unreadable, "message of " .. image:len() .. " bytes, " .. message.size .. " expected")
        return
    end
    local at, carried = 0, message.size
    for _, place in ipairs(message) do
        local width = place[2]
        if place[3] == "carrier" then
            local length = image:range(at, 4):uint()
            if length > image:len() - carried then
                tree:add_proto_expert_info(unreadable, place[1] .. " names " .. length .. " bytes, " ..
                    image:len() - carried .. " are left")
                return
            end
            if length > 0 then
                add_carrier(tree, place, image:range(carried, length), pinfo)
            end
            carried = carried + length
        else
            add_number(tree, place, image:range(at, width))
        end
        at = at + width
    end
    if carried ~= image:len() then
        tree:add_proto_expert_info(unreadable, image:len() - carried .. " bytes behind the message's end")
    end
end

local function add_head(tree, buffer)
    tree:add(record.version, buffer(0, 1))
    tree:add(record.kind, buffer(1, 1))
    tree:add(record.direction, buffer(2, 1))
    tree:add(record.side, buffer(3, 1))
    tree:add(record.browser, buffer(4, 4))
    tree:add(record.process, buffer(8, 4))
    tree:add(record.identifier, buffer(12, 4))
    tree:add(record.result, buffer(16, 4))
    tree:add(record.count, buffer(20, 4))
end

function bus.dissector(buffer, pinfo, root)
    local tree = root:add(bus, buffer())
    if buffer:len() < header_size or buffer(0, 1):uint() ~= 1 then
        tree:add_proto_expert_info(unreadable, "no record of version 1")
        return
    end
    add_head(tree, buffer)
    local kind = buffer(1, 1):uint()
    local program, text = buffer(24, 2):uint(), buffer(26, 2):uint()
    local at = header_size + program + text
    if at > buffer:len() then
        tree:add_proto_expert_info(unreadable, "the texts are longer than the record")
        return
    end
    if program > 0 then
        tree:add(record.program, buffer(header_size, program))
    end
    if text > 0 then
        tree:add(record.text, buffer(header_size + program, text))
    end
    local message = messages[buffer(12, 4):uint()]
    local name = kinds[kind] or "unknown"
    if message then
        name = kind == 0 and message.name or name .. " " .. message.name
        tree:add(record.operation, message.name):set_generated()
    end
    if at < buffer:len() then
        if kind == 0 and message then
            add_message(tree, message, buffer(at), pinfo)
        elseif kind == 4 or kind == 5 then
            tree:add(record.section, buffer(at))
            add_section(buffer(at), pinfo, tree)
        elseif kind == 0 then
            tree:add_proto_expert_info(unreadable, "no message has this identifier")
        end
    end
    -- Last, because a section's dissector sets the columns too.
    local browser = "browser " .. buffer(4, 4):uint()
    local to_service = buffer(2, 1):uint() == 0
    pinfo.cols.protocol = "DTV bus"
    pinfo.cols.src = to_service and browser or "service"
    pinfo.cols.dst = to_service and "service" or browser
    pinfo.cols.info = name
end

DissectorTable.get("wtap_encap"):add(wtap.USER0, bus)
