/*
 * The default Finnish invoice: address block, header, rows, totals, notice
 * texts, VAT breakdown, footer and the bank transfer form with the barcode
 * and the payment QR code.
 * Lengths are millimetres from the top-left corner of an A4 page, font sizes
 * are points. Serves invoices, interest invoices, credit notes, reminders,
 * receipts and delivery notes (types 0 to 5).
 */

var FONT = 'Arial';
var LEFT = 20;
var RIGHT = 195;
var TABLE_WIDTH = RIGHT - LEFT;
var FOOTER_TOP = 278;
var FORM_TOP = FOOTER_TOP - 95;
// The payment QR code stands right of the barcode, centred between the form
// and the footer line so that some white stays around it for the camera.
var QR_SIZE = 14;
var QR_TOP = FORM_TOP + 77 + (FOOTER_TOP - 1 - FORM_TOP - 77 - QR_SIZE) / 2;
var ROW_GAP = 2;
var ROW_TEXT_LIMIT = 25;
var SELLER_FONT_SIZE = 12;
var SELLER_LINE = 5.2;
// The header grid: a label and its value take a row of HEADER_ROW unless the
// value wraps onto more lines.
var HEADER_TOP = 22;
var HEADER_ROW = 9;
var HEADER_VALUE_OFFSET = 3.3;
// The rows table: the line under the headings and the first row below a
// heading of one line; the product column gives room to wider columns but
// keeps at least PRODUCT_MIN_WIDTH.
var TABLE_HEADER_LINE = 4.2;
var TABLE_HEADER_HEIGHT = 6;
var PRODUCT_MIN_WIDTH = 40;
var QUANTITY_WIDTH = 11;
var UNIT_WIDTH = 7;
var UNIT_GAP = 0.8;
var COLUMN_GAP = 1.5;

var TEXTS = {
    fi: {
        titles: ['LASKU', 'KORKOLASKU', 'HYVITYSLASKU', 'MAKSUMUISTUTUS', 'KUITTI', 'LÄHETE'],
        dateFormat: 'd.M.yyyy',
        date: 'Päivämäärä',
        customerNumber: 'Asiakasnumero',
        businessId: 'Y-tunnus',
        delivery: 'Toimitustapa',
        deliveryDate: 'Toimituspäivä',
        paymentTerms: 'Maksuehto',
        periodForComplaints: 'Huomautusaika',
        invoiceNumber: 'Laskun numero',
        deliveryNoteNumber: 'Lähetteen numero',
        dueDate: 'Eräpäivä',
        yourReference: 'Viitteenne',
        ourReference: 'Viitteemme',
        interestOnArrears: 'Viivästyskorko',
        product: 'Tuote',
        quantity: 'Määrä',
        unitPrice: 'à-hinta',
        discount: 'Ale %',
        vatExcluded: 'Veroton',
        vatPercent: 'ALV %',
        vat: 'ALV',
        total: 'Yhteensä',
        vatIncluded: 'Verollinen',
        vatBreakdown: 'ALV-erittely',
        page: 'Sivu %1 (%2)',
        continues: 'Jatkuu seuraavalla sivulla',
        reference: 'Viitenumero',
        phone: 'Puh.',
        vatNumber: 'ALV-nro',
        immediately: 'HETI',
        paid: 'MAKSETTU'
    },
    sv: {
        titles: ['FAKTURA', 'RÄNTEFAKTURA', 'KREDITNOTA', 'BETALNINGSPÅMINNELSE', 'KVITTO',
            'FÖLJESEDEL'],
        dateFormat: 'd.M.yyyy',
        date: 'Datum',
        customerNumber: 'Kundnummer',
        businessId: 'FO-nummer',
        delivery: 'Leveranssätt',
        deliveryDate: 'Leveransdag',
        paymentTerms: 'Betalningsvillkor',
        periodForComplaints: 'Reklamationstid',
        invoiceNumber: 'Fakturanummer',
        deliveryNoteNumber: 'Följesedelnummer',
        dueDate: 'Förfallodag',
        yourReference: 'Er referens',
        ourReference: 'Vår referens',
        interestOnArrears: 'Dröjsmålsränta',
        product: 'Produkt',
        quantity: 'Antal',
        unitPrice: 'À-pris',
        discount: 'Rabatt %',
        vatExcluded: 'Exkl. moms',
        vatPercent: 'Moms %',
        vat: 'Moms',
        total: 'Totalt',
        vatIncluded: 'Inkl. moms',
        vatBreakdown: 'Momsspecifikation',
        page: 'Sida %1 (%2)',
        continues: 'Fortsätter på följande sida',
        reference: 'Referensnummer',
        phone: 'Tfn',
        vatNumber: 'Momsnr',
        immediately: 'GENAST',
        paid: 'BETALD'
    },
    en: {
        titles: ['INVOICE', 'INTEREST INVOICE', 'CREDIT NOTE', 'REMINDER', 'RECEIPT',
            'DELIVERY NOTE'],
        dateFormat: 'd.M.yyyy',
        date: 'Date',
        customerNumber: 'Customer number',
        businessId: 'Business ID',
        delivery: 'Delivery',
        deliveryDate: 'Delivery date',
        paymentTerms: 'Terms of payment',
        periodForComplaints: 'Period for complaints',
        invoiceNumber: 'Invoice number',
        deliveryNoteNumber: 'Delivery note number',
        dueDate: 'Due date',
        yourReference: 'Your reference',
        ourReference: 'Our reference',
        interestOnArrears: 'Interest on arrears',
        product: 'Product',
        quantity: 'Quantity',
        unitPrice: 'Unit price',
        discount: 'Discount %',
        vatExcluded: 'VAT excl.',
        vatPercent: 'VAT %',
        vat: 'VAT',
        total: 'Total',
        vatIncluded: 'VAT incl.',
        vatBreakdown: 'VAT breakdown',
        page: 'Page %1 (%2)',
        continues: 'Continued on the next page',
        reference: 'Reference number',
        phone: 'Tel.',
        vatNumber: 'VAT no.',
        immediately: 'IMMEDIATELY',
        paid: 'PAID'
    }
};

/* The labels of the bank transfer form follow the national standard and are
 * always in Finnish and Swedish. */
var FORM_LABELS = {
    account: 'Saajan\ntilinumero\nMottagarens\nkontonummer',
    receiver: 'Saaja\nMottagare',
    payer: 'Maksajan\nnimi ja\nosoite\nBetalarens\nnamn och\nadress',
    signature: 'Allekirjoitus\nUnderskrift',
    fromAccount: 'Tililtä nro\nFrån konto nr',
    reference: 'Viitenro\nRef.nr',
    dueDate: 'Eräpäivä\nFörfallodag',
    euro: 'Euro',
    caption: 'TILISIIRTO. GIRERING'
};

function text(path) {
    var value = get(path);
    return value === undefined || value === null ? '' : String(value);
}

function font(size, style) {
    setFont(FONT, size, style || 'normal');
}

function lines(list) {
    var result = [];
    for (var i = 0; i < list.length; i++) {
        if (list[i])
            result.push(list[i]);
    }
    return result;
}

function languageTexts(code) {
    code = String(code || '').toLowerCase().substring(0, 2);
    return TEXTS[code] || TEXTS.fi;
}

function boxHeight(width, limit, value) {
    return boundingRect(0, 0, width, limit, value).height;
}

/* Everything of one invoice that the layout needs more than once. */
function Invoice(index) {
    var p = 'invoices/' + index + '/';
    this.index = index;
    this.path = p;
    this.type = get(p + 'type');
    this.texts = languageTexts(text(p + 'customer/language') || text('settings/language'));
    this.payable = this.type !== 5;
    this.itemCount = get(p + 'items/length') || 0;
    this.itemOptions = get('settings/invoiceItemOptions') || 3;
    this.hasDiscount = false;
    this.hasVat = false;
    for (var i = 0; i < this.itemCount; i++) {
        if (get(p + 'items/' + i + '/discountPercent'))
            this.hasDiscount = true;
        if (get(p + 'items/' + i + '/vatRate'))
            this.hasVat = true;
    }
    var due = text(p + 'dueDate');
    this.overdue = this.type === 3 && due !== '' && due < currentDate();
}

Invoice.prototype.date = function (key) {
    var value = formatDate(text(this.path + key), this.texts.dateFormat);
    return value === undefined ? '' : value;
};

Invoice.prototype.dueDateText = function () {
    return this.overdue ? this.texts.immediately : this.date('dueDate');
};

/* Column layout of the rows table. The discount column folds into the first
 * when no row has a discount, the three VAT columns when no row has VAT. A
 * column whose heading or values need more room than its usual width takes
 * it from the product column; a heading wraps at its blanks when even that
 * is not enough. */
Invoice.prototype.columns = function () {
    var t = this.texts;
    var layout;
    if (this.type === 5) {
        layout = [
            { key: 'product', width: 157, title: t.product, gap: 2 },
            { key: 'quantity', width: 18, title: t.quantity }
        ];
    } else {
        layout = [
            { key: 'product', width: 53, title: t.product, gap: 2 },
            { key: 'quantity', width: 18, title: t.quantity },
            { key: 'unitPrice', width: 18, title: t.unitPrice, gap: COLUMN_GAP },
            { key: 'discount', width: 13, title: t.discount, fold: !this.hasDiscount,
                gap: COLUMN_GAP },
            { key: 'vatExcluded', width: 18, title: t.vatExcluded, fold: !this.hasVat,
                gap: COLUMN_GAP },
            { key: 'vatPercent', width: 15, title: t.vatPercent, fold: !this.hasVat,
                gap: COLUMN_GAP },
            { key: 'vat', width: 18, title: t.vat, fold: !this.hasVat, gap: COLUMN_GAP },
            { key: 'total', width: 22, title: t.total, gap: 0 }
        ];
    }
    var shown = [];
    for (var i = 0; i < layout.length; i++) {
        if (layout[i].fold)
            layout[0].width += layout[i].width;
        else
            shown.push(layout[i]);
    }
    this.fitColumns(shown);
    var result = { list: shown };
    var x = LEFT;
    for (i = 0; i < shown.length; i++) {
        shown[i].x = x;
        result[shown[i].key] = shown[i];
        x += shown[i].width;
    }
    return result;
};

/* The widest value of each column in the rows and the totals line. */
Invoice.prototype.valueWidths = function () {
    var widths = { quantity: 0, unit: 0 };
    var widen = function (key, value) {
        var width = value ? boundingRect(value).width : 0;
        widths[key] = Math.max(widths[key] || 0, width);
    };
    font(9);
    for (var row = 0; row < this.itemCount; row++) {
        if (this.isDescriptionRow(row))
            continue;
        var p = this.path + 'items/' + row + '/';
        widen('quantity', getNumber(p + 'quantity'));
        widen('unit', text(p + 'unitCode'));
        widen('unitPrice', getNumber(p + 'amountVatExcluded', 2));
        widen('discount', get(p + 'discountPercent') ? getNumber(p + 'discountPercent') : '');
        widen('vatExcluded', getCurrency(p + 'totalAmountVatExcluded'));
        widen('vatPercent', getNumber(p + 'vatRate'));
        widen('vat', getCurrency(p + 'totalVatAmount'));
        widen('total', getCurrency(p + 'totalAmount'));
    }
    font(9, 'bold');
    widen('vatExcluded', getCurrency(this.path + 'totalAmountVatExcluded'));
    widen('vat', getCurrency(this.path + 'totalVatAmount'));
    widen('total', getCurrency(this.path + 'totalAmount'));
    return widths;
};

function widestWord(value) {
    var words = String(value).split(' ');
    var widest = 0;
    for (var i = 0; i < words.length; i++)
        widest = Math.max(widest, boundingRect(words[i]).width);
    return widest;
}

/* Widens the columns whose headings or values do not fit, narrowing the
 * product column. Headings are measured whole first, then by their widest
 * word, which then wraps. */
Invoice.prototype.fitColumns = function (columns) {
    var values = this.valueWidths();
    var needs = function (wholeTitles) {
        var result = [];
        var extra = 0;
        for (var i = 1; i < columns.length; i++) {
            var column = columns[i];
            font(8, 'bold');
            var title = wholeTitles ? boundingRect(column.title).width : widestWord(column.title);
            var need;
            if (column.key === 'quantity') {
                need = Math.max(QUANTITY_WIDTH, title, values.quantity)
                    + Math.max(UNIT_WIDTH, values.unit + UNIT_GAP);
            } else {
                need = Math.max(title, values[column.key] || 0) + column.gap;
            }
            result.push(Math.max(column.width, need));
            extra += result[i - 1] - column.width;
        }
        return { widths: result, extra: extra };
    };
    var fit = needs(true);
    if (columns[0].width - fit.extra < PRODUCT_MIN_WIDTH)
        fit = needs(false);
    columns[0].width = Math.max(PRODUCT_MIN_WIDTH, columns[0].width - fit.extra);
    for (var i = 1; i < columns.length; i++) {
        var column = columns[i];
        column.width = fit.widths[i - 1];
        // The unit code stands after the number, the heading over the number.
        if (column.key === 'quantity')
            column.numberWidth = column.width - Math.max(UNIT_WIDTH, values.unit + UNIT_GAP);
    }
};

/* The box of a column's heading and right-aligned values. */
function valueBox(column) {
    return column.key === 'quantity' ? column.numberWidth : column.width - column.gap;
}

Invoice.prototype.rowText = function (row) {
    var p = this.path + 'items/' + row + '/';
    var name = text(p + 'productName');
    var description = text(p + 'text');
    if (this.itemOptions === 1)
        return name || description;
    if (this.itemOptions === 2)
        return description || name;
    return lines([name, description]).join('\n');
};

Invoice.prototype.isDescriptionRow = function (row) {
    return !get(this.path + 'items/' + row + '/quantity');
};

Invoice.prototype.rowHeight = function (row, columns) {
    font(9);
    var width = this.isDescriptionRow(row) ? TABLE_WIDTH : valueBox(columns.product);
    var height = boxHeight(width, ROW_TEXT_LIMIT, this.rowText(row));
    return Math.min(height, ROW_TEXT_LIMIT) + ROW_GAP;
};

Invoice.prototype.noticeText = function () {
    var notice = text(this.path + 'noticeText1');
    if (this.type === 3)
        notice = lines([notice, text('settings/reminderText')]).join('\n\n');
    return notice;
};

Invoice.prototype.closingHeight = function () {
    var height = this.payable ? 11 : 4;
    var notice = this.noticeText();
    if (notice) {
        font(9);
        setLineHeight(4.5);
        height += Math.min(boxHeight(TABLE_WIDTH, ROW_TEXT_LIMIT, notice), ROW_TEXT_LIMIT) + 3;
        setLineHeight(-1);
    }
    var rates = get(this.path + 'vat/length') || 0;
    if (rates > 1 && this.payable)
        height += 5 * (rates + 1) + 4;
    return height;
};

/* Seller and customer addresses. */
function drawAddresses(d) {
    var y = 12;
    if (get('seller/hasLogo')) {
        var logoHeight = get('settings/logoHeight') || 20;
        drawImage(25, y, 85, logoHeight, 'seller/logo');
        y += logoHeight;
    } else {
        // The seller's name, street and post office all in the same size.
        font(SELLER_FONT_SIZE, 'bold');
        drawText(25, y, 85, text('seller/name'));
        font(SELLER_FONT_SIZE);
        var seller = lines([text('seller/streetName'),
            lines([text('seller/postCode'), text('seller/townName')]).join(' ')]);
        for (var i = 0; i < seller.length; i++)
            drawText(25, y + 6 + i * SELLER_LINE, 85, seller[i]);
        y += 6 + seller.length * SELLER_LINE;
    }
    var c = d.path + 'customer/';
    var customer = lines([text(c + 'name'), text(c + 'contact'), text(c + 'streetName'),
        lines([text(c + 'postCode'), text(c + 'townName')]).join(' '), text(c + 'country')]);
    var top = Math.max(45, y + 8);
    font(10);
    for (var j = 0; j < customer.length; j++)
        drawText(25, top + j * 4.6, 85, customer[j]);
    return top + customer.length * 4.6;
}

function headerItems(d) {
    var t = d.texts;
    var p = d.path;
    var left = [[t.date, d.date('date')]];
    var right = [];
    if (get(p + 'customer/number') >= 0)
        left.push([t.customerNumber, getNumber(p + 'customer/number', 0, false)]);
    if (d.type === 5) {
        left.push([t.delivery, text(p + 'delivery')]);
        if (get(p + 'hasDeliveryDate'))
            left.push([t.deliveryDate, d.date('deliveryDate')]);
        right.push([t.deliveryNoteNumber, getNumber(p + 'number', 0, false)]);
        right.push([t.yourReference, text(p + 'buyerRef')]);
        right.push([t.ourReference, text(p + 'sellerRef')]);
    } else {
        left.push([t.businessId, text(p + 'customer/businessId')]);
        left.push([t.delivery, text(p + 'delivery')]);
        if (get(p + 'hasDeliveryDate'))
            left.push([t.deliveryDate, d.date('deliveryDate')]);
        left.push([t.paymentTerms, text(p + 'paymentTerms')]);
        left.push([t.periodForComplaints, text(p + 'periodForComplaints')]);
        right.push([t.invoiceNumber, getNumber(p + 'number', 0, false)]);
        if (d.type === 0 || d.type === 1 || d.type === 3)
            right.push([t.dueDate, d.dueDateText()]);
        right.push([t.yourReference, text(p + 'buyerRef')]);
        right.push([t.ourReference, text(p + 'sellerRef')]);
        if (get(p + 'interestOnArrears') && d.type !== 2 && d.type !== 4)
            right.push([t.interestOnArrears, getNumber(p + 'interestOnArrears') + ' %']);
    }
    var filled = function (items) {
        var result = [];
        for (var i = 0; i < items.length; i++) {
            if (items[i][1])
                result.push(items[i]);
        }
        return result;
    };
    return { left: filled(left), right: filled(right) };
}

/* The grid of labels and values below the title: each value wraps within
 * its column, and an item of more lines pushes the ones below it down. */
function headerGrid(d) {
    var items = headerItems(d);
    var columns = [[115, 38, items.left], [155, 40, items.right]];
    var cells = [];
    var bottom = HEADER_TOP;
    font(10);
    for (var c = 0; c < columns.length; c++) {
        var y = HEADER_TOP;
        var x = columns[c][0];
        var width = columns[c][1];
        var list = columns[c][2];
        var oneLine = boxHeight(width, ROW_TEXT_LIMIT, 'Åg');
        for (var i = 0; i < list.length; i++) {
            var valueHeight = Math.min(boxHeight(width, ROW_TEXT_LIMIT, list[i][1]), ROW_TEXT_LIMIT);
            cells.push({ x: x, y: y, width: width, label: list[i][0], value: list[i][1] });
            y += HEADER_ROW + Math.max(0, valueHeight - oneLine);
        }
        bottom = Math.max(bottom, y);
    }
    return { cells: cells, bottom: bottom };
}

/* Title, page number and the grid of dates, numbers and references. */
function drawHeader(d, page, pageCount) {
    var pageText = '';
    var pageWidth = 0;
    if (pageCount > 1) {
        pageText = d.texts.page.replace('%1', page).replace('%2', pageCount);
        font(9);
        pageWidth = boundingRect(pageText).width + 3;
        drawTextRight(115, 13, 80, pageText);
    }
    var title = d.texts.titles[d.type] || d.texts.titles[0];
    for (var size = 14; size > 9; size--) {
        font(size, 'bold');
        if (boundingRect(title).width < 80 - pageWidth)
            break;
    }
    drawText(115, 12, 80 - pageWidth, title);

    var grid = headerGrid(d);
    for (var i = 0; i < grid.cells.length; i++) {
        var cell = grid.cells[i];
        font(8);
        drawText(cell.x, cell.y, cell.width, cell.label);
        font(10);
        drawText(cell.x, cell.y + HEADER_VALUE_OFFSET, cell.width, ROW_TEXT_LIMIT, cell.value);
    }
    return grid.bottom;
}

/* The height of the headings, which wrap in their columns. */
function tableHeaderHeight(columns) {
    font(8, 'bold');
    var oneLine = boxHeight(TABLE_WIDTH, ROW_TEXT_LIMIT, 'Åg');
    var height = oneLine;
    for (var i = 0; i < columns.list.length; i++) {
        var column = columns.list[i];
        height = Math.max(height, boxHeight(valueBox(column), ROW_TEXT_LIMIT, column.title));
    }
    return TABLE_HEADER_HEIGHT + height - oneLine;
}

function drawTableHeader(columns, y) {
    var height = tableHeaderHeight(columns);
    font(8, 'bold');
    for (var i = 0; i < columns.list.length; i++) {
        var column = columns.list[i];
        if (column.key === 'product')
            drawText(column.x, y, valueBox(column), ROW_TEXT_LIMIT, column.title);
        else
            drawTextRight(column.x, y, valueBox(column), ROW_TEXT_LIMIT, column.title);
    }
    var line = y + height - (TABLE_HEADER_HEIGHT - TABLE_HEADER_LINE);
    setPen('#000', 0.2);
    drawLine(LEFT, line, RIGHT, line);
    return y + height;
}

function drawAmount(columns, key, y, value) {
    var column = columns[key];
    if (column && value)
        drawTextRight(column.x, y, valueBox(column), value);
}

function drawRow(d, columns, row, y) {
    var p = d.path + 'items/' + row + '/';
    font(9);
    if (d.isDescriptionRow(row)) {
        drawText(LEFT, y, TABLE_WIDTH, ROW_TEXT_LIMIT, d.rowText(row));
        return;
    }
    drawText(LEFT, y, valueBox(columns.product), ROW_TEXT_LIMIT, d.rowText(row));
    var quantity = columns.quantity;
    drawTextRight(quantity.x, y, quantity.numberWidth, getNumber(p + 'quantity'));
    var unitX = quantity.numberWidth + UNIT_GAP;
    drawText(quantity.x + unitX, y, quantity.width - unitX, text(p + 'unitCode'));
    if (d.type === 5)
        return;
    drawAmount(columns, 'unitPrice', y, getNumber(p + 'amountVatExcluded', 2));
    if (get(p + 'discountPercent'))
        drawAmount(columns, 'discount', y, getNumber(p + 'discountPercent'));
    drawAmount(columns, 'vatExcluded', y, getCurrency(p + 'totalAmountVatExcluded'));
    drawAmount(columns, 'vatPercent', y, getNumber(p + 'vatRate'));
    drawAmount(columns, 'vat', y, getCurrency(p + 'totalVatAmount'));
    drawAmount(columns, 'total', y, getCurrency(p + 'totalAmount'));
}

/* The totals line, the notice text and the VAT breakdown. */
function drawClosing(d, columns, y) {
    var p = d.path;
    var t = d.texts;
    setPen('#000', 0.2);
    drawLine(LEFT, y, RIGHT, y);
    if (d.payable) {
        y += 1.5;
        font(9, 'bold');
        drawText(LEFT, y, valueBox(columns.product), t.total);
        drawAmount(columns, 'vatExcluded', y, getCurrency(p + 'totalAmountVatExcluded'));
        drawAmount(columns, 'vat', y, getCurrency(p + 'totalVatAmount'));
        drawAmount(columns, 'total', y, getCurrency(p + 'totalAmount'));
        y += 9.5;
    } else {
        y += 4;
    }

    var notice = d.noticeText();
    if (notice) {
        font(9);
        setLineHeight(4.5);
        var height = Math.min(boxHeight(TABLE_WIDTH, ROW_TEXT_LIMIT, notice), ROW_TEXT_LIMIT);
        drawText(LEFT, y, TABLE_WIDTH, ROW_TEXT_LIMIT, notice);
        setLineHeight(-1);
        y += height + 3;
    }

    var rates = get(p + 'vat/length') || 0;
    if (rates > 1 && d.payable) {
        var right = [120, 145, 170, 195];
        font(8, 'bold');
        drawText(75, y, 30, t.vatBreakdown);
        var titles = [t.vatPercent, t.vatExcluded, t.vat, t.vatIncluded];
        for (var c = 0; c < 4; c++)
            drawTextRight(right[c] - 24, y, 24, titles[c]);
        drawLine(75, y + 4.2, RIGHT, y + 4.2);
        font(8);
        for (var i = 0; i < rates; i++) {
            var v = p + 'vat/' + i + '/';
            var rowY = y + 5 * (i + 1) + 0.5;
            var values = [getNumber(v + 'percent') + ' %', getCurrency(v + 'amountVatExcluded'),
                getCurrency(v + 'vatAmount'), getCurrency(v + 'amount')];
            for (c = 0; c < 4; c++)
                drawTextRight(right[c] - 24, rowY, 24, values[c]);
        }
    }
}

/* Seller's contact data, bank account and business id on every page; the
 * payment summary on the last page of a payable invoice. */
function drawFooter(d, last) {
    var t = d.texts;
    setPen('#000', 0.2);
    drawLine(LEFT, FOOTER_TOP - 1, RIGHT, FOOTER_TOP - 1);
    var account = 'seller/bankAccounts/0/';
    var businessId = text('seller/businessId');
    var phone = text('seller/phoneNumber');
    var columns = [
        [LEFT, 42, lines([text('seller/name'), text('seller/streetName'),
            lines([text('seller/postCode'), text('seller/townName')]).join(' ')])],
        [64, 46, lines([phone ? t.phone + ' ' + phone : '', text('seller/emailAddress'),
            text('seller/webAddressShort')])],
        [112, 45, lines([businessId ? t.businessId + ' ' + businessId : '',
            get(account + 'iban') ? 'IBAN ' + text(account + 'iban') : '',
            get(account + 'bic') ? 'BIC ' + text(account + 'bic') : ''])]
    ];
    if (last && d.payable && d.type !== 2) {
        columns.push([159, 36, [t.dueDate + ' ' + d.dueDateText(),
            lines([t.reference, text(d.path + 'referenceNumber')]).join(' '),
            t.total + ' ' + getCurrency(d.path + 'totalAmount') + ' €']]);
    }
    for (var c = 0; c < columns.length; c++) {
        for (var i = 0; i < columns[c][2].length; i++) {
            font(8, c === 0 && i === 0 ? 'bold' : 'normal');
            drawText(columns[c][0], FOOTER_TOP + i * 3.4, columns[c][1], columns[c][2][i]);
        }
    }
    font(8);
    var footerX = [LEFT, 64, 112];
    var footerWidth = [42, 46, 83];
    for (var k = 1; k <= 3; k++)
        drawText(footerX[k - 1], FOOTER_TOP + 10.2, footerWidth[k - 1], text('settings/footerText' + k));
}

function drawFormLabel(x, y, label) {
    font(7);
    setLineHeight(2.5);
    drawText(x, y, 18, 20, label);
    setLineHeight(-1);
}

/* The standard Finnish bank transfer form. */
function drawTransferForm(d) {
    var f = FORM_TOP;
    var p = d.path;
    setPen('#000', 0.5);
    // The caption stands left of the grid, at 1 to 4.5 mm.
    drawLine(0, f, 210, f);
    drawLine(4.5, f + 17, 111.4, f + 17);
    drawLine(4.5, f + 27, 111.4, f + 27);
    drawLine(23, f + 52, 111.4, f + 52);
    drawLine(4.5, f + 61, 210, f + 61);
    drawLine(4.5, f + 69, 210, f + 69);
    drawLine(0, f + 77, 210, f + 77);
    drawLine(23, f, 23, f + 77);
    drawLine(111.4, f, 111.4, f + 77);
    drawLine(131, f + 61, 131, f + 77);
    drawLine(160, f + 69, 160, f + 77);

    rotate(-90);
    font(7.5, 'bold');
    drawTextHCenter(-(f + 77), 1.2, 77, FORM_LABELS.caption);
    rotate(90);

    drawFormLabel(4.8, f + 1.2, FORM_LABELS.account);
    drawFormLabel(4.8, f + 18.2, FORM_LABELS.receiver);
    drawFormLabel(4.8, f + 28.2, FORM_LABELS.payer);
    drawFormLabel(4.8, f + 53.2, FORM_LABELS.signature);
    drawFormLabel(4.8, f + 62.2, FORM_LABELS.fromAccount);
    drawFormLabel(113, f + 62.2, FORM_LABELS.reference);
    drawFormLabel(113, f + 70.2, FORM_LABELS.dueDate);
    font(7);
    drawText(162, f + 70.2, 12, FORM_LABELS.euro);

    var accounts = Math.min(get('seller/bankAccounts/length') || 0, 3);
    font(9);
    for (var i = 0; i < accounts; i++) {
        var a = 'seller/bankAccounts/' + i + '/';
        var y = f + 1.5 + i * 4.8;
        drawText(25, y, 22, text(a + 'name'));
        drawText(48, y, 41, text(a + 'iban'));
        drawText(90, y, 21, text(a + 'bic'));
    }

    font(10);
    drawText(25, f + 18, 85, text('seller/name'));
    font(9);
    drawText(25, f + 22.5, 85, lines([text('seller/streetName'),
        lines([text('seller/postCode'), text('seller/townName')]).join(' ')]).join(', '));

    var c = p + 'customer/';
    var payer = lines([text(c + 'name'), text(c + 'contact'), text(c + 'streetName'),
        lines([text(c + 'postCode'), text(c + 'townName')]).join(' '), text(c + 'country')]);
    font(10);
    for (var j = 0; j < payer.length && j < 5; j++)
        drawText(25, f + 28.5 + j * 4.5, 85, payer[j]);

    font(9);
    drawText(114, f + 2, 85, 30, text(p + 'noticeText2'));

    font(10, 'bold');
    drawText(133, f + 63, 75, text(p + 'referenceNumber'));
    drawText(133, f + 71, 26, d.dueDateText());
    var amount = d.type === 4 ? d.texts.paid : getCurrency(p + 'balance');
    drawTextRight(170, f + 71, 37, amount);

    if (get('settings/barcodeVisible')) {
        var code = text(p + (d.type === 4 ? 'barcode' : 'balanceBarcode'));
        if (code)
            drawBarcode128C(20, f + 79, 95, 12, code);
    }
    // Only documents that ask for a payment: invoices, interest invoices and
    // reminders; the model leaves the text empty for nothing to pay.
    var asksPayment = d.type === 0 || d.type === 1 || d.type === 3;
    if (asksPayment && get('settings/qrCode')) {
        var qr = text(p + 'balanceQrCode');
        if (qr)
            drawQrCode(RIGHT - QR_SIZE, QR_TOP, QR_SIZE, QR_SIZE, qr);
    }
}

/* Splits the rows into pages. Rows run down to the footer; the last page
 * keeps room for the totals and the transfer form. */
function planPages(d, columns, tableTop) {
    var pageLimit = FOOTER_TOP - 8;
    var lastLimit = (d.payable ? FORM_TOP : FOOTER_TOP) - 3;
    var pages = [[]];
    var y = tableTop;
    var heights = [];
    for (var row = 0; row < d.itemCount; row++) {
        var height = d.rowHeight(row, columns);
        heights.push(height);
        var page = pages[pages.length - 1];
        if (y + height > pageLimit && page.length > 0) {
            pages.push([]);
            y = tableTop;
        }
        pages[pages.length - 1].push(row);
        y += height;
    }
    if (y + d.closingHeight() > lastLimit) {
        var full = pages[pages.length - 1];
        var carried = [];
        // The totals do not stand alone on a page: one row goes with them.
        if (full.length > 1) {
            carried.push(full.pop());
        }
        pages.push(carried);
    }
    return { pages: pages, heights: heights };
}

function printInvoice(index) {
    var d = new Invoice(index);
    var columns = d.columns();
    font(10);
    var addressBottom = drawAddressesMeasure(d);
    var tableTop = Math.max(addressBottom, headerGrid(d).bottom) + 5;
    var rowsTop = tableTop + tableHeaderHeight(columns);
    var plan = planPages(d, columns, rowsTop);
    var pageCount = plan.pages.length;
    for (var page = 0; page < pageCount; page++) {
        if (page > 0)
            newPage();
        var last = page === pageCount - 1;
        drawAddresses(d);
        drawHeader(d, page + 1, pageCount);
        var y = drawTableHeader(columns, tableTop);
        var rows = plan.pages[page];
        for (var i = 0; i < rows.length; i++) {
            drawRow(d, columns, rows[i], y);
            y += plan.heights[rows[i]];
        }
        if (last) {
            drawClosing(d, columns, y);
            if (d.payable)
                drawTransferForm(d);
        } else {
            font(8, 'italic');
            drawTextRight(LEFT, FOOTER_TOP - 7, TABLE_WIDTH, d.texts.continues);
        }
        drawFooter(d, last);
    }
}

/* The bottom of the address block without drawing it. */
function drawAddressesMeasure(d) {
    var enabled = isOutputEnabled();
    setOutputEnabled(false);
    var bottom = drawAddresses(d);
    setOutputEnabled(enabled);
    return bottom;
}

function print() {
    setLocale('fi');
    var count = get('invoices/length');
    for (var i = 0; i < count; i++) {
        if (i > 0)
            newPage();
        printInvoice(i);
    }
}
