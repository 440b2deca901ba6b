/*
 * The invoice list: the invoices found by the search, one line each, with
 * the visible columns chosen in the preview, the totals of the list and its
 * VAT breakdown. The common part is in list-common.
 */

var TITLE = 'Laskuluettelo';

function amount(key) {
    return function(prefix) {
        return getCurrency(prefix + key);
    };
}

var COLUMNS = [
    { name: 'number', title: 'Numero', right: true,
        text: function(prefix) { return getNumber(prefix + 'number', 0, false); } },
    { name: 'date', title: 'Päivämäärä', text: function(prefix) { return date(prefix + 'date'); } },
    { name: 'dueDate', title: 'Eräpäivä',
        text: function(prefix) { return date(prefix + 'dueDate'); } },
    { name: 'deliveryDate', title: 'Toimituspäivä',
        text: function(prefix) {
            return get(prefix + 'hasDeliveryDate') ? date(prefix + 'deliveryDate') : '';
        } },
    { name: 'customerNumber', title: 'Asiakasnro', right: true,
        text: function(prefix) { return positiveNumber(prefix + 'customer/number'); } },
    { name: 'customerName', title: 'Asiakas', wrap: true,
        text: function(prefix) { return get(prefix + 'customer/name'); } },
    { name: 'totalAmountVatExcluded', title: 'Veroton', right: true,
        text: amount('totalAmountVatExcluded') },
    { name: 'totalVatAmount', title: 'ALV', right: true, text: amount('totalVatAmount') },
    { name: 'totalAmountVatIncluded', title: 'Verollinen', right: true,
        text: amount('totalAmount') },
    { name: 'balance', title: 'Avoin saldo', right: true, text: amount('balance') },
    { name: 'referenceNumber', title: 'Viitenumero',
        text: function(prefix) { return get(prefix + 'referenceNumber'); } }
];

function drawVatBreakdown() {
    var count = get('vat/length') || 0;
    if (count == 0)
        return;
    var width = 28;
    var titles = ['ALV %', 'Veroton', 'ALV', 'Verollinen'];
    var x = layout.right - width * titles.length;
    var i, c;
    setFont(FONT, 9, 'normal');
    var height = lineHeight() + 0.8;
    ensureSpace(height * (count + 3) + 6, null);
    layout.y += 4;
    setFont(FONT, 9, 'bold');
    drawText(x, layout.y, width * 2, 'ALV-erittely');
    layout.y += height;
    for (c = 0; c < titles.length; c++)
        drawTextRight(x + width * c, layout.y, width, titles[c]);
    layout.y += height;
    setPen('#000', 0.3);
    drawLine(x, layout.y, layout.right, layout.y);
    layout.y += 1;
    setFont(FONT, 9, 'normal');
    for (i = 0; i < count; i++) {
        var prefix = 'vat/' + i + '/';
        var cells = [formatNumber(get(prefix + 'percent'), 2, 0) + ' %',
            getCurrency(prefix + 'amountVatExcluded'), getCurrency(prefix + 'vatAmount'),
            getCurrency(prefix + 'amount')];
        for (c = 0; c < cells.length; c++)
            drawTextRight(x + width * c, layout.y, width, cells[c]);
        layout.y += height;
    }
    drawLine(x, layout.y, layout.right, layout.y);
    layout.y += 1;
    setFont(FONT, 9, 'bold');
    var totals = ['Yhteensä', getCurrency('totalAmountVatExcluded'),
        getCurrency('totalVatAmount'), getCurrency('totalAmount')];
    for (c = 0; c < totals.length; c++)
        drawTextRight(x + width * c, layout.y, width, totals[c]);
    layout.y += height;
}

function print() {
    setUpPage();
    printTable(visibleColumns(COLUMNS), 'invoices', criteriaLines());
    drawTotals([['Veroton', getCurrency('totalAmountVatExcluded')],
        ['ALV', getCurrency('totalVatAmount')], ['Avoin saldo', getCurrency('totalBalance')],
        ['Loppusumma', getCurrency('totalAmount')]]);
    drawVatBreakdown();
    drawFooter();
}
