# Turns a page of docs/ into the Markdown of a man page, for lowdown. Variables: name, summary and synopsis of the
# program, others (its siblings, for SEE ALSO), without (headings of sections that are for those who change the program,
# separated by |), only (the heading of the one section that is about the program, if it is not the whole page).
# Tables become lists: a man page is as narrow as its terminal, and cells of three words a line cannot be read.

function cells(line, list,    count, i) {
    gsub(/\\\|/, "\001", line)
    sub(/^\| */, "", line)
    sub(/ *\| *$/, "", line)
    count = split(line, list, / *\| */)
    for (i = 1; i <= count; i++)
        gsub(/\001/, "|", list[i])
    return count
}

# A row is a term and what it means. Of more columns than two the others are told by their headings.
function print_row(line,    list, count, i, text, label) {
    count = cells(line, list)
    text = count == 2 ? list[2] : ""
    for (i = 2; count > 2 && i <= count; i++)
        if (list[i] != "") {
            label = headings[i] == "" || headings[i] ~ /^what/ ? "" : headings[i] ": "
            text = text (text == "" ? "" : "; ") label list[i]
        }
    print list[1] == "" ? "-" : list[1]
    print ": " (text == "" ? "-" : text)
    print ""
}

BEGIN {
    print "# NAME\n"
    print name " - " summary "\n"
    print "# SYNOPSIS\n"
    print "**" name "** " synopsis "\n"
    print "# DESCRIPTION\n"
    count = split(without, left_out, "|")
    for (i = 1; i <= count; i++)
        is_left_out[left_out[i]] = 1
    is_skipped = only != ""
}

/^```/ { is_code = !is_code }
/^## / && !is_code {
    is_skipped = only == "" ? substr($0, 4) in is_left_out : substr($0, 4) != only
    if (only != "")
        next
}
is_skipped { next }
is_code { print; next }
/^# / { next }
/^- \[[^]]*\]\(#[^)]*\)$/ { next }
/^\|/ {
    gsub(/\[simulator\.md\]\([^)]*\)/, "**pvr-simulator**(1)")
    gsub(/\[sandbox\.md\]\([^)]*\)/, "**pvr-sandbox**(1)")
    if (!is_table) {
        is_table = 1
        delete headings
        cells($0, headings)
        print ""
    } else if ($0 !~ /^\|[-: |]+\|$/) {
        print_row($0)
    }
    next
}
{
    is_table = 0
    gsub(/\[pvrctl\.md\]\([^)]*\)/, "**pvrctl**(1)")
    gsub(/\[simulator\.md\]\([^)]*\)/, "**pvr-simulator**(1)")
    gsub(/\[sandbox\.md\]\([^)]*\)/, "**pvr-sandbox**(1)")
}
/^## / { print "# " toupper(substr($0, 4)); next }
/^### / { print "## " substr($0, 5); next }
{ print }

END {
    print "\n# SEE ALSO\n"
    count = split(others, list, " ")
    for (i = 1; i <= count; i++)
        printf "%s**%s**(1)", i == 1 ? "" : ", ", list[i]
    print ""
}
