/*
 * The product list: number, name, unit, unit prices without and with VAT,
 * VAT rate and product group of every product. The common part is in
 * list-common.
 */

var TITLE = 'Tuoteluettelo';

var COLUMNS = [
    { title: 'Nro', text: field('number') },
    { title: 'Nimi', wrap: true, text: field('name') },
    { title: 'Yksikkö', text: field('unitCode') },
    { title: 'Veroton', right: true,
        text: function(prefix) { return getNumber(prefix + 'amountVatExcluded', 2); } },
    { title: 'ALV %', right: true,
        text: function(prefix) { return formatNumber(get(prefix + 'vatRate'), 2, 0); } },
    { title: 'Verollinen', right: true,
        text: function(prefix) { return getNumber(prefix + 'amount', 2); } },
    { title: 'Tuoteryhmä', wrap: true, text: field('category') }
];

function print() {
    setUpPage();
    var count = printTable(COLUMNS, 'products', []);
    drawTotals([['Tuotteita', '' + count]]);
    drawFooter();
}
