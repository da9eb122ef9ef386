# Turns lines "name | measured | target" into one table with a verdict. The first number of each text counts; a target
# that says "at least", "above" or ">" is a lower limit, every other one an upper limit.
function number(text) {
    gsub(",", "", text)
    return match(text, /-?[0-9]+(\.[0-9]+)?/) ? substr(text, RSTART, RLENGTH) + 0 : ""
}

function verdict(measured, target,    got, limit) {
    got = number(measured)
    limit = number(target)
    if (got == "")
        return "NO"
    if (limit == "")
        return "-"
    if (tolower(target) ~ /at least|above|>/)
        return got >= limit ? "yes" : "NO"
    return got <= limit ? "yes" : "NO"
}

function widest(text, column) {
    if (length(text) > width[column])
        width[column] = length(text)
}

function row(a, b, c, d) {
    printf "%-*s | %-*s | %-*s | %s\n", width[1], a, width[2], b, width[3], c, d
}

NF >= 3 {
    gsub(/^ +| +$/, "", $1)
    gsub(/ +$/, "", $3)
    lines++
    for (column = 1; column <= 3; column++) {
        cell[lines, column] = $column
        widest($column, column)
    }
}

END {
    widest("question", 1)
    widest("measured", 2)
    widest("target", 3)
    row("question", "measured", "target", "met?")
    for (i = 1; i <= lines; i++)
        row(cell[i, 1], cell[i, 2], cell[i, 3], verdict(cell[i, 2], cell[i, 3]))
}
