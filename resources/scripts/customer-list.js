/*
 * The customer list: number, name, contact and address of every customer;
 * in landscape also the phone number and e-mail address. The common part
 * is in list-common.
 */

var TITLE = 'Asiakasluettelo';

// formatDate() takes an ISO date text, not a Date, so this gives nothing
// and the footer shows no date.
function footerDate() {
    return formatDate(new Date(), DATE_FORMAT);
}

var COLUMNS = [
    { title: 'Nro', right: true,
        text: function(prefix) { return getNumber(prefix + 'number', 0, false); } },
    { title: 'Nimi', wrap: true, text: field('name') },
    { title: 'Yhteyshenkilö', wrap: true, text: field('contact') },
    { title: 'Lähiosoite', wrap: true, text: field('streetName') },
    { title: 'Postinumero', text: field('postCode') },
    { title: 'Postitoimipaikka', wrap: true, text: field('townName') },
    { title: 'Maa', wrap: true, text: field('country') }
];

var WIDE_COLUMNS = [
    { title: 'Puhelinnumero', text: field('phoneNumber') },
    { title: 'Sähköposti', wrap: true, text: field('emailAddress') }
];

function print() {
    setUpPage();
    var columns = layout.landscape ? COLUMNS.concat(WIDE_COLUMNS) : COLUMNS;
    var count = printTable(columns, 'customers', []);
    drawTotals([['Asiakkaita', '' + count]]);
    drawFooter();
}
