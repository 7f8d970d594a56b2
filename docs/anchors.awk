# Gives each heading of a page the anchor that a link to it on the page names, as forges do by
# themselves, for doxygen: "## Choose a git" gets "{#choose-a-git}".
/^## / {
    anchor = tolower(substr($0, 4))
    gsub(/[^a-z0-9 -]/, "", anchor)
    gsub(/ /, "-", anchor)
    print $0 " {#" anchor "}"
    next
}
{ print }
