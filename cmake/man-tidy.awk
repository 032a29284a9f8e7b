# Tidies the man page that lowdown makes: headings on one line and without an empty paragraph behind them, terms as
# tagged paragraphs, and literals in bold, since \fC is a font that not every reader knows.

function flush_held(    i) {
    for (i = 1; i <= held; i++)
        print lines[i]
    held = 0
}

{ gsub(/\\fC/, "\\fB") }
is_heading { print ".SH " $0; is_heading = 0; is_behind_heading = 1; next }
is_subheading { print ".SS " $0; is_subheading = 0; is_behind_heading = 1; next }
is_behind_heading { is_behind_heading = 0; if ($0 == ".LP" || $0 == ".PP") next }
$0 == ".SH" { flush_held(); is_heading = 1; next }
$0 == ".SS" { flush_held(); is_subheading = 1; next }
# A term is a paragraph, then space upwards, then an indented paragraph without a tag.
$0 == ".LP" { flush_held(); lines[++held] = $0; next }
held && $0 ~ /^\.(if [nt] \\|sp -[0-9.]+v)$/ { is_term = 1; next }
held && is_term && $0 ~ /^\.IP "" / {
    is_term = 0
    lines[1] = ".TP " $3
    flush_held()
    next
}
held && $0 ~ /^\./ { flush_held() }
held { lines[++held] = $0; next }
{ print }
END { flush_held() }
