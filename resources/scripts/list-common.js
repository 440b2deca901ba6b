/*
 * What the list reports share, evaluated before each of them: measuring the
 * columns, the title with the criteria lines, the table with its header
 * repeated after every page break, the totals and the footer with the
 * seller's name, the page number and the print date. A list script defines
 * TITLE, its columns and print(); it may define footerDate() anew. Lengths
 * in millimetres, font sizes in points.
 *
 * A column is { name, title, text(prefix), right, stretch }: name is the
 * column's key under "columns/" when the user can hide it, text() gives the
 * cell of the row whose paths begin with prefix, right aligns it right and
 * a stretching column gives way when the line is too long.
 */

var FONT = 'Arial';
var MARGIN = 15;
var MIN_PADDING = 1.5;
var MAX_PADDING = 6;
var MIN_STRETCH = 25;
var DATE_FORMAT = 'd.M.yyyy';

var layout = {};

function supportedOrientations() {
    return 3;
}

function measure(text) {
    if (text === undefined || text === null || text === '')
        return 0;
    return boundingRect(text).width;
}

// The height of a line in the current font.
function lineHeight() {
    return boundingRect('ÅgjÄ').height;
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
}

// Gives every column its x and width: the widest of its heading and texts,
// then padding between the columns from what is left of the line. When
// even the least padding does not fit, the stretching column narrows and
// its texts are clipped.
function layoutColumns(columns, texts) {
    var i, r, width;
    var total = 0;
    setFont(FONT, 9, 'bold');
    for (i = 0; i < columns.length; i++)
        columns[i].width = measure(columns[i].title);
    setFont(FONT, 9, 'normal');
    for (r = 0; r < texts.length; r++) {
        for (i = 0; i < columns.length; i++) {
            width = measure(texts[r][i]);
            if (width > columns[i].width)
                columns[i].width = width;
        }
    }
    for (i = 0; i < columns.length; i++)
        total += columns[i].width;
    var available = layout.right - layout.left;
    var padding = columns.length > 1 ? (available - total) / (columns.length - 1) : MAX_PADDING;
    if (padding > MAX_PADDING)
        padding = MAX_PADDING;
    if (padding < MIN_PADDING) {
        padding = MIN_PADDING;
        var excess = total + padding * (columns.length - 1) - available;
        for (i = 0; i < columns.length && excess > 0; i++) {
            if (columns[i].stretch) {
                var cut = Math.min(excess, Math.max(0, columns[i].width - MIN_STRETCH));
                columns[i].width -= cut;
                excess -= cut;
            }
        }
    }
    var x = layout.left;
    for (i = 0; i < columns.length; i++) {
        columns[i].x = x;
        x += columns[i].width + padding;
    }
    layout.tableRight = columns.length > 0 ? x - padding : layout.right;
}

// One table line; the boxes are a millimetre wider than the measured texts
// so that clipping keeps every character that was measured.
function drawCells(columns, cells, y) {
    for (var i = 0; i < columns.length; i++) {
        var column = columns[i];
        if (column.right)
            drawTextRight(column.x - 1, y, column.width + 1, cells[i]);
        else
            drawText(column.x, y, column.width + 1, cells[i]);
    }
}

function drawHeader(columns) {
    var titles = [];
    for (var i = 0; i < columns.length; i++)
        titles.push(columns[i].title);
    setFont(FONT, 9, 'bold');
    drawCells(columns, titles, layout.y);
    layout.y += lineHeight() + 0.5;
    setPen('#000', 0.3);
    drawLine(layout.left, layout.y, layout.tableRight, layout.y);
    layout.y += 1;
    setFont(FONT, 9, 'normal');
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
            drawText(layout.left, layout.y, width, criteria[i]);
            layout.y += lineHeight();
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
    setFont(FONT, 9, 'normal');
    var height = lineHeight() + 0.8;
    for (var r = 0; r < texts.length; r++) {
        ensureSpace(height, columns);
        setFont(FONT, 9, 'normal');
        drawCells(columns, texts[r], layout.y);
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
