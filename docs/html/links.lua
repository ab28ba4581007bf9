-- Links between the pages lead to the pages made of them; what is not among them is named and not linked.
local title

local function made(target)  -- the page that stands for a file, or the file where it is copied too
  local path, anchor = target:match("^([^#]*)(.*)$")
  if path == "" or path:match("%.svg$") or path:match("%.png$") then return target end
  local folder = PANDOC_STATE.input_files[1]:match("^(.*/)") or ""
  local parts = {}
  for part in (folder .. path):gmatch("[^/]+") do
    if part == ".." then table.remove(parts) elseif part ~= "." then table.insert(parts, part) end
  end
  for page in os.getenv("PAGES"):gmatch("%S+") do
    if page == table.concat(parts, "/") then
      return (path:gsub("README%.md$", "index.html"):gsub("%.md$", ".html")) .. anchor
    end
  end
end

function Link(link)
  if link.target:match("^%a+://") then return link end
  local target = made(link.target)
  if not target then return link.content end
  link.target = target
  return link
end

function Header(header)
  if header.level == 1 and not title then title = pandoc.utils.stringify(header) end
end

function Meta(meta)
  meta.pagetitle = title
  return meta
end

function Math(math)  -- sites that render Markdown know "\cr" at the end of a row, pandoc two backslashes
  math.text = math.text:gsub("\\cr%f[%A]", "\\\\")
  return math
end

return {{Header = Header}, {Meta = Meta}, {Link = Link, Math = Math}}
