/*
 * The payment journal: the payments found by the search with their
 * invoices, customers and bank accounts, and the totals of the journal.
 * The common part is in list-common.
 */

var TITLE = 'Suorituspäiväkirja';

var COLUMNS = [
    { name: 'number', title: 'Laskun nro', right: true,
        text: function(prefix) { return getNumber(prefix + 'invoice/number', 0, false); } },
    { name: 'date', title: 'Päivämäärä',
        text: function(prefix) { return date(prefix + 'invoice/date'); } },
    { name: 'dueDate', title: 'Eräpäivä',
        text: function(prefix) { return date(prefix + 'invoice/dueDate'); } },
    { name: 'deliveryDate', title: 'Toimituspäivä',
        text: function(prefix) {
            return get(prefix + 'invoice/hasDeliveryDate') ? date(prefix + 'invoice/deliveryDate')
                                                           : '';
        } },
    { name: 'customerNumber', title: 'Asiakasnro', right: true,
        text: function(prefix) { return positiveNumber(prefix + 'customer/number'); } },
    { name: 'customerName', title: 'Asiakas', wrap: true,
        text: function(prefix) { return get(prefix + 'customer/name'); } },
    { name: 'totalAmount', title: 'Loppusumma', right: true,
        text: function(prefix) { return getCurrency(prefix + 'invoice/totalAmount'); } },
    { name: 'paymentAmount', title: 'Suoritus', right: true,
        text: function(prefix) { return getCurrency(prefix + 'amount'); } },
    { name: 'paymentDate', title: 'Maksupäivä',
        text: function(prefix) { return date(prefix + 'date'); } },
    { name: 'bankAccount', title: 'Pankkitili', wrap: true,
        text: function(prefix) { return get(prefix + 'bankAccount/shortName'); } }
];

function print() {
    setUpPage();
    printTable(visibleColumns(COLUMNS), 'payments', criteriaLines());
    drawTotals([['Loppusumma', getCurrency('totalAmount')],
        ['Suoritus', getCurrency('totalPaymentAmount')]]);
    drawFooter();
}
