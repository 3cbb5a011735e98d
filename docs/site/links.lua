-- A filter of pandoc for the pages of the project: links to pages lead to the pages of the site, those to headers to their
-- contracts, and the name of a request, event or enumeration, written as code, to its description. NAMES lists those names,
-- one "NAME PAGE" a line.
local places = {}
for line in io.lines(os.getenv("NAMES")) do
    local name, page = line:match("^(%S+) (%S+)$")
    places[name] = page
end
local root = os.getenv("ROOT")

function Link(link)
    if not link.target:match("^%a+://") then
        link.target = link.target:gsub("%.md$", ".html"):gsub("%.md#", ".html#")
        local header = link.target:match("^%.%./platform/.-([^/]+%.h)$") or link.target:match("^%.%./include/([^/]+)$")
        if header then
            link.target = root .. "contracts/" .. header:gsub("%.", "_8") .. ".html"
        end
    end
    return link
end

-- Code inside a link or a heading stays as it is.
local function described(code)
    local place = places[code.text]
    if place then
        return pandoc.Link(code, root .. place), false
    end
end

return {
    { Link = Link },
    {
        traverse = "topdown",
        Header = function(header) return header, false end,
        Link = function(link) return link, false end,
        Code = described,
    },
}
