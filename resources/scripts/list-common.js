/*
 * What the list reports share, evaluated before each of them: measuring the
 * columns, the title with the criteria lines, the table with its header
 * repeated after every page break, the totals and the footer with the
 * seller's name, the page number and the print date. A list script defines
 * TITLE, its columns and print(); it may define footerDate() anew. Lengths
 * in millimetres, font sizes in points.
 *
 * A column is { name, title, text(prefix), right, wrap }: name is the
 * column's key under "columns/" when the user can hide it, text() gives the
 * cell of the row whose paths begin with prefix, right aligns it right and
 * wrap lets a text of several words go onto more lines. Headings always
 * wrap at their blanks.
 */

var FONT = 'Arial';
var MARGIN = 15;
var MIN_PADDING = 1.5;
var MAX_PADDING = 6;
var FONT_SIZE = 9;
var MIN_FONT_SIZE = 6;
var FONT_STEP = 0.5;
var DATE_FORMAT = 'd.M.yyyy';

var layout = { fontSize: FONT_SIZE };

function supportedOrientations() {
    return 3;
}

function measure(text) {
    if (text === undefined || text === null || text === '')
        return 0;
    return boundingRect(String(text)).width;
}

// The height of a line in the current font.
function lineHeight() {
    return boundingRect('ÅgjÄ').height;
}

function tableFont(style) {
    setFont(FONT, layout.fontSize, style || 'normal');
}

function setUpPage() {
    setLocale('fi');
    var paper = paperRect();
    layout.landscape = (orientation() & 2) != 0;
    layout.left = paper.x + MARGIN;
    layout.right = paper.x + paper.width - MARGIN;
    layout.footerTop = paper.y + paper.height - MARGIN - 4;
    layout.bottom = layout.footerTop - 3;
    layout.page = 1;
    layout.y = MARGIN;
    layout.fontSize = FONT_SIZE;
}

function cellText(value) {
    // Only plain blanks separate words: amounts keep their no-break spaces.
    return value === undefined || value === null ? '' : String(value).replace(/[\t\r\n]+/g, ' ');
}

// The widest word of a text in the current font.
function widestWord(text) {
    var words = cellText(text).split(' ');
    var widest = 0;
    for (var i = 0; i < words.length; i++)
        widest = Math.max(widest, measure(words[i]));
    return widest;
}

// The lines of a text in a column of the width: words go onto the next line
// when the line is full, and a word longer than the whole width is broken
// where it must, so that nothing reaches past the column.
function wrapText(text, width) {
    text = cellText(text);
    if (measure(text) <= width)
        return [text];
    var words = text.split(' ');
    var lines = [];
    var line = '';
    for (var i = 0; i < words.length; i++) {
        var candidate = line ? line + ' ' + words[i] : words[i];
        if (measure(candidate) <= width) {
            line = candidate;
            continue;
        }
        if (line)
            lines.push(line);
        var word = words[i];
        while (word.length > 1 && measure(word) > width) {
            var length = word.length - 1;
            while (length > 1 && measure(word.substring(0, length)) > width)
                length--;
            lines.push(word.substring(0, length));
            word = word.substring(length);
        }
        line = word;
    }
    if (line || lines.length == 0)
        lines.push(line);
    return lines;
}

// Each column's natural width (its widest heading and cell) and the least
// widths it can do with: its widest word or cell beside its whole heading
// (leastWhole), or beside the widest word of its heading (least).
function measureColumns(columns, texts) {
    var i, r;
    tableFont('bold');
    for (i = 0; i < columns.length; i++) {
        columns[i].heading = measure(columns[i].title);
        columns[i].headingWord = widestWord(columns[i].title);
        columns[i].natural = columns[i].heading;
        columns[i].cells = 0;
    }
    tableFont();
    for (r = 0; r < texts.length; r++) {
        for (i = 0; i < columns.length; i++) {
            var width = measure(texts[r][i]);
            columns[i].natural = Math.max(columns[i].natural, width);
            columns[i].cells = Math.max(columns[i].cells,
                columns[i].wrap ? widestWord(texts[r][i]) : width);
        }
    }
    for (i = 0; i < columns.length; i++) {
        columns[i].leastWhole = Math.max(columns[i].cells, columns[i].heading);
        columns[i].least = Math.max(columns[i].cells, columns[i].headingWord);
    }
}

function sum(columns, key) {
    var total = 0;
    for (var i = 0; i < columns.length; i++)
        total += columns[i][key];
    return total;
}

// Narrows the columns in proportion to their natural widths until they fill
// the space, none below its least width.
function narrowColumns(columns, space) {
    var fixed = [];
    var i;
    for (i = 0; i < columns.length; i++)
        fixed.push(false);
    for (var changed = true; changed;) {
        changed = false;
        var fixedWidth = 0;
        var freeNatural = 0;
        for (i = 0; i < columns.length; i++) {
            if (fixed[i])
                fixedWidth += columns[i].least;
            else
                freeNatural += columns[i].natural;
        }
        var scale = freeNatural > 0 ? (space - fixedWidth) / freeNatural : 0;
        for (i = 0; i < columns.length; i++) {
            if (fixed[i])
                continue;
            columns[i].width = columns[i].natural * scale;
            if (columns[i].width < columns[i].least) {
                columns[i].width = columns[i].least;
                fixed[i] = true;
                changed = true;
            }
        }
    }
}

// Gives every column its x and width so that the table fits between the
// margins: the natural widths with padding from what is left of the line;
// when they do not fit, narrower columns whose texts wrap; when even the
// least widths do not fit, a smaller font.
function layoutColumns(columns, texts) {
    var available = layout.right - layout.left;
    var gaps = Math.max(columns.length - 1, 0);
    var i;
    for (layout.fontSize = FONT_SIZE; layout.fontSize > MIN_FONT_SIZE;
        layout.fontSize -= FONT_STEP) {
        measureColumns(columns, texts);
        if (sum(columns, 'least') + MIN_PADDING * gaps <= available)
            break;
    }
    if (layout.fontSize <= MIN_FONT_SIZE) {
        layout.fontSize = MIN_FONT_SIZE;
        measureColumns(columns, texts);
    }
    // Headings stay on one line when the space allows.
    if (sum(columns, 'leastWhole') + MIN_PADDING * gaps <= available) {
        for (i = 0; i < columns.length; i++)
            columns[i].least = columns[i].leastWhole;
    }
    var padding = gaps > 0 ? (available - sum(columns, 'natural')) / gaps : MAX_PADDING;
    padding = Math.min(padding, MAX_PADDING);
    if (padding >= MIN_PADDING) {
        for (i = 0; i < columns.length; i++)
            columns[i].width = columns[i].natural;
    } else {
        padding = MIN_PADDING;
        var space = available - padding * gaps;
        var least = sum(columns, 'least');
        if (least <= space) {
            narrowColumns(columns, space);
        } else {
            // Even the smallest font leaves words too long: they are broken.
            for (i = 0; i < columns.length; i++)
                columns[i].width = columns[i].least * space / least;
        }
    }
    var x = layout.left;
    for (i = 0; i < columns.length; i++) {
        columns[i].x = x;
        x += columns[i].width + padding;
    }
    layout.tableRight = columns.length > 0 ? x - padding : layout.right;
}

// One table line of cells, each wrapped in its column; returns its height.
// The boxes are a millimetre wider than the measured texts so that clipping
// keeps every character that was measured.
function drawCells(columns, cells, y, measureOnly) {
    var height = lineHeight();
    var lines = 1;
    for (var i = 0; i < columns.length; i++) {
        var column = columns[i];
        var parts = wrapText(cells[i], column.width);
        lines = Math.max(lines, parts.length);
        if (measureOnly)
            continue;
        for (var k = 0; k < parts.length; k++) {
            if (column.right)
                drawTextRight(column.x - 1, y + k * height, column.width + 1, parts[k]);
            else
                drawText(column.x, y + k * height, column.width + 1, parts[k]);
        }
    }
    return lines * height;
}

function drawHeader(columns) {
    var titles = [];
    for (var i = 0; i < columns.length; i++)
        titles.push(columns[i].title);
    tableFont('bold');
    layout.y += drawCells(columns, titles, layout.y, false) + 0.5;
    setPen('#000', 0.3);
    drawLine(layout.left, layout.y, layout.tableRight, layout.y);
    layout.y += 1;
    tableFont();
}

function drawTitle(criteria) {
    layout.y = MARGIN;
    var width = layout.right - layout.left;
    if (layout.page == 1) {
        setFont(FONT, 14, 'bold');
        drawText(layout.left, layout.y, width, TITLE);
        layout.y += lineHeight() + 1;
        setFont(FONT, 10, 'normal');
        for (var i = 0; i < criteria.length; i++) {
            var lines = wrapText(criteria[i], width);
            for (var k = 0; k < lines.length; k++) {
                drawText(layout.left, layout.y, width + 1, lines[k]);
                layout.y += lineHeight();
            }
        }
        layout.y += 4;
    } else {
        setFont(FONT, 10, 'bold');
        drawText(layout.left, layout.y, width, TITLE);
        layout.y += lineHeight() + 3;
    }
}

function drawFooter() {
    var half = (layout.right - layout.left) / 2;
    setFont(FONT, 8, 'normal');
    setPen('#000', 0.2);
    drawLine(layout.left, layout.footerTop - 1, layout.right, layout.footerTop - 1);
    drawText(layout.left, layout.footerTop, half - 15, get('name'));
    drawTextHCenter(layout.left + half - 15, layout.footerTop, 30, 'Sivu ' + layout.page);
    drawTextRight(layout.left + half + 15, layout.footerTop, half - 15, footerDate());
}

// Ends the page when height no longer fits above the footer; the table
// header is repeated on the new page when columns are given.
function ensureSpace(height, columns) {
    if (layout.y + height <= layout.bottom)
        return;
    drawFooter();
    newPage();
    layout.page++;
    drawTitle([]);
    if (columns)
        drawHeader(columns);
}

function drawRows(columns, texts) {
    var gap = 0.8;
    for (var r = 0; r < texts.length; r++) {
        tableFont();
        var height = drawCells(columns, texts[r], layout.y, true) + gap;
        ensureSpace(height, columns);
        tableFont();
        drawCells(columns, texts[r], layout.y, false);
        layout.y += height;
    }
    setPen('#000', 0.3);
    drawLine(layout.left, layout.y, layout.tableRight, layout.y);
    layout.y += 2;
}

// Labelled totals right-aligned at the right margin, the last one in bold.
function drawTotals(totals) {
    setFont(FONT, 9, 'bold');
    var height = lineHeight() + 0.8;
    ensureSpace(height * totals.length + 2, null);
    layout.y += 2;
    for (var i = 0; i < totals.length; i++) {
        setFont(FONT, 9, i == totals.length - 1 ? 'bold' : 'normal');
        drawText(layout.right - 85, layout.y, 45, totals[i][0]);
        drawTextRight(layout.right - 40, layout.y, 40, totals[i][1]);
        layout.y += height;
    }
}

function visibleColumns(all) {
    var columns = [];
    for (var i = 0; i < all.length; i++) {
        if (all[i].name === undefined || get('columns/' + all[i].name) !== false)
            columns.push(all[i]);
    }
    return columns;
}

function rowTexts(columns, prefix, count) {
    var texts = [];
    for (var r = 0; r < count; r++) {
        var cells = [];
        for (var i = 0; i < columns.length; i++)
            cells.push(columns[i].text(prefix + r + '/'));
        texts.push(cells);
    }
    return texts;
}

function criteriaLines() {
    var lines = [];
    var count = get('criteria/length') || 0;
    for (var i = 0; i < count; i++)
        lines.push(get('criteria/' + i));
    return lines;
}

function date(path) {
    return getDateTime(path, DATE_FORMAT);
}

function positiveNumber(path) {
    var value = get(path);
    return value === undefined || value < 0 ? '' : getNumber(path, 0, false);
}

function field(key) {
    return function(prefix) {
        return get(prefix + key);
    };
}

function footerDate() {
    return currentDateTime(DATE_FORMAT);
}

// After setUpPage(): the title with the criteria lines and the table of
// the rows under "root/N/". Returns the number of rows.
function printTable(columns, root, criteria) {
    var count = get(root + '/length') || 0;
    var texts = rowTexts(columns, root + '/', count);
    layoutColumns(columns, texts);
    drawTitle(criteria);
    drawHeader(columns);
    drawRows(columns, texts);
    return count;
}
