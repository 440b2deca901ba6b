/*
 * The default Finvoice e-invoice for versions 1.3, 2.01 and 3.0: seller,
 * buyer, delivery, invoice details with the VAT breakdown, the rows and the
 * payment details. Elements follow the order of the schema; amounts are
 * written as "1234,50" and dates as CCYYMMDD. Texts longer than the chosen
 * version allows are cut to fit.
 */

var CURRENCY = 'EUR';
var DATE_FORMAT = 'yyyyMMdd';
var ZERO_AMOUNT = '0,00';
// ISO 6523 code of the Finnish e-invoice addresses (OVT codes).
var OVT_SCHEME = '0037';

// By printed type: invoice, interest invoice, credit note, reminder, receipt,
// delivery note. "un" is the UN/CEFACT document code of version 3.0.
var TYPES = [
    { code: 'INV01', un: '380', text: 'Lasku' },
    { code: 'INV03', un: '380', text: 'Korkolasku' },
    { code: 'INV02', un: '381', text: 'Hyvityslasku' },
    { code: 'INV08', un: '380', text: 'Maksumuistutus' },
    { code: 'INV01', un: '380', text: 'Kuitti' },
    { code: 'DEV01', un: '', text: 'Lähete' }
];
var RECEIPT = 4;
var DELIVERY_NOTE = 5;

// Country names as customers write them, by ISO 3166 code.
var COUNTRIES = {
    FI: ['suomi', 'finland', 'finnland'],
    SE: ['ruotsi', 'sverige', 'sweden', 'schweden'],
    NO: ['norja', 'norge', 'norway', 'norwegen'],
    DK: ['tanska', 'danmark', 'denmark', 'dänemark'],
    IS: ['islanti', 'island', 'iceland', 'ísland'],
    EE: ['viro', 'eesti', 'estonia', 'estland'],
    LV: ['latvia', 'lettland', 'latvija'],
    LT: ['liettua', 'lithuania', 'litauen', 'lietuva'],
    DE: ['saksa', 'deutschland', 'germany', 'tyskland'],
    NL: ['alankomaat', 'hollanti', 'nederland', 'netherlands', 'nederländerna'],
    BE: ['belgia', 'belgium', 'belgien', 'belgique'],
    FR: ['ranska', 'france', 'frankrike', 'frankreich'],
    ES: ['espanja', 'españa', 'spain', 'spanien'],
    IT: ['italia', 'italy', 'italien'],
    PL: ['puola', 'polska', 'poland', 'polen'],
    AT: ['itävalta', 'österreich', 'austria', 'österrike'],
    CH: ['sveitsi', 'schweiz', 'switzerland'],
    GB: ['iso-britannia', 'yhdistynyt kuningaskunta', 'united kingdom', 'great britain',
        'storbritannien', 'england'],
    IE: ['irlanti', 'ireland', 'irland'],
    US: ['yhdysvallat', 'usa', 'united states', 'förenta staterna']
};

// Finvoice 3.0 names units by the UN/ECE code beside the seller's own.
var UNIT_CODES = {
    h: 'HUR', t: 'HUR', tunti: 'HUR', min: 'MIN', pv: 'DAY', vrk: 'DAY', vk: 'WEE', kk: 'MON',
    kpl: 'C62', kg: 'KGM', g: 'GRM', l: 'LTR', m: 'MTR', km: 'KMT', m2: 'MTK',
    m3: 'MTQ', 'm²': 'MTK', 'm³': 'MTQ', kwh: 'KWH'
};

var version = { major: 3 };

function isNotEmpty(value) {
    return value !== undefined && value !== null && String(value) !== '';
}

function text(path) {
    var value = get(path);
    return isNotEmpty(value) ? String(value) : '';
}

function clip(value, length) {
    value = String(value);
    return value.length > length ? value.substring(0, length) : value;
}

function textElementIfNotEmpty(name, value) {
    if (isNotEmpty(value))
        textElement(name, value);
}

function attributeIfNotEmpty(name, value) {
    if (isNotEmpty(value))
        attribute(name, value);
}

function countryNameToCode(name) {
    var key = String(name).replace(/^\s+|\s+$/g, '').toLowerCase();
    if (key === '')
        return 'FI';
    if (/^[a-z]{2}$/.test(key))
        return key.toUpperCase();
    for (var code in COUNTRIES) {
        if (COUNTRIES[code].indexOf(key) >= 0)
            return code;
    }
    return '';
}

function amountText(name, value) {
    startElement(name);
    attribute('AmountCurrencyIdentifier', CURRENCY);
    characters(value);
    endElement(name);
}

function amount(name, path) {
    amountText(name, getCurrency(path));
}

function date(name, path) {
    startElement(name);
    attribute('Format', 'CCYYMMDD');
    characters(getDateTime(path, DATE_FORMAT));
    endElement(name);
}

// An e-invoice address; version 3.0 names the scheme of OVT codes.
function identifier(name, value) {
    startElement(name);
    if (version.major >= 3 && value.indexOf(OVT_SCHEME) === 0)
        attribute('SchemeID', OVT_SCHEME);
    characters(clip(value, 35));
    endElement(name);
}

function firstNotEmpty() {
    for (var i = 0; i < arguments.length; i++) {
        if (isNotEmpty(arguments[i]))
            return String(arguments[i]);
    }
    return '';
}

function writeMessageTransmissionDetails() {
    var intermediator = text('settings/intermediatorId');
    startElement('MessageTransmissionDetails');
    startElement('MessageSenderDetails');
    identifier('FromIdentifier', firstNotEmpty(text('settings/senderId'), text('seller/edi')));
    textElement('FromIntermediator', clip(intermediator, 35));
    endElement('MessageSenderDetails');
    startElement('MessageReceiverDetails');
    identifier('ToIdentifier', firstNotEmpty(text('invoice/customer/receiverId'),
        text('settings/defaultReceiverId')));
    // A buyer without an operator of its own is reached through the seller's.
    textElement('ToIntermediator', clip(firstNotEmpty(text('invoice/customer/intermediatorId'),
        intermediator), 35));
    endElement('MessageReceiverDetails');
    startElement('MessageDetails');
    textElement('MessageIdentifier', 'lasku' + text('invoice/number'));
    textElement('MessageTimeStamp', currentDateTime("yyyy-MM-dd'T'HH:mm:ss"));
    if (version.major >= 3)
        textElement('SpecificationIdentifier', 'EN16931');
    endElement('MessageDetails');
    endElement('MessageTransmissionDetails');
}

// Street, town, post code and country of the seller, buyer or delivery party;
// nothing when the address is incomplete.
function writeAddress(prefix, element, street, town, postCode, country) {
    if (!isNotEmpty(street) || !isNotEmpty(town) || !isNotEmpty(postCode))
        return;
    startElement(element);
    textElement(prefix + 'StreetName', clip(street, 35));
    textElement(prefix + 'TownName', clip(town, 35));
    textElement(prefix + 'PostCodeIdentifier', clip(postCode, 35));
    if (version.major >= 3)
        textElementIfNotEmpty('CountryCode', countryNameToCode(country));
    textElementIfNotEmpty('CountryName', clip(country, 35));
    endElement(element);
}

function writeSeller() {
    var nameLength = version.major >= 2 ? 70 : 35;
    startElement('SellerPartyDetails');
    textElementIfNotEmpty('SellerPartyIdentifier', text('seller/businessId'));
    textElement('SellerOrganisationName', clip(text('seller/name'), nameLength));
    textElementIfNotEmpty('SellerOrganisationTaxCode', text('seller/vatNumber'));
    writeAddress('Seller', 'SellerPostalAddressDetails', text('seller/streetName'),
        text('seller/townName'), text('seller/postCode'), text('seller/country'));
    endElement('SellerPartyDetails');
    textElementIfNotEmpty('SellerOrganisationUnitNumber', clip(text('seller/edi'), 35));

    var phone = text('seller/phoneNumber');
    var email = text('seller/emailAddress');
    if (isNotEmpty(phone) || isNotEmpty(email)) {
        startElement('SellerCommunicationDetails');
        textElementIfNotEmpty('SellerPhoneNumberIdentifier', clip(phone, 35));
        textElementIfNotEmpty('SellerEmailaddressIdentifier', clip(email, 70));
        endElement('SellerCommunicationDetails');
    }

    startElement('SellerInformationDetails');
    textElementIfNotEmpty('SellerHomeTownName', clip(text('seller/townName'), 35));
    textElementIfNotEmpty('SellerWebaddressIdentifier',
        clip(text('seller/webAddress'), version.major >= 3 ? 70 : 35));
    var count = get('seller/bankAccounts/length');
    for (var i = 0; i < count; i++) {
        var account = 'seller/bankAccounts/' + i + '/';
        var bic = text(account + 'bic');
        // The schema wants both; an account without a BIC is left out here.
        if (!isNotEmpty(bic))
            continue;
        startElement('SellerAccountDetails');
        startElement('SellerAccountID');
        attribute('IdentificationSchemeName', 'IBAN');
        characters(text(account + 'ibanRaw').replace(/\s/g, ''));
        endElement('SellerAccountID');
        startElement('SellerBic');
        attribute('IdentificationSchemeName', 'BIC');
        characters(bic);
        endElement('SellerBic');
        endElement('SellerAccountDetails');
    }
    endElement('SellerInformationDetails');
}

function writeBuyer() {
    var customer = 'invoice/customer/';
    var name = text(customer + 'name');
    var street = text(customer + 'streetName');
    var town = text(customer + 'townName');
    var postCode = text(customer + 'postCode');
    var country = text(customer + 'country');

    startElement('BuyerPartyDetails');
    textElementIfNotEmpty('BuyerPartyIdentifier', text(customer + 'businessId'));
    textElement('BuyerOrganisationName', clip(name, version.major >= 2 ? 70 : 35));
    textElementIfNotEmpty('BuyerOrganisationTaxCode', clip(text(customer + 'vatNumber'), 35));
    writeAddress('Buyer', 'BuyerPostalAddressDetails', street, town, postCode, country);
    endElement('BuyerPartyDetails');
    textElementIfNotEmpty('BuyerContactPersonName',
        clip(text(customer + 'contact'), version.major >= 3 ? 70 : 35));

    var phone = text(customer + 'phoneNumber');
    var email = text(customer + 'emailAddress');
    if (isNotEmpty(phone) || isNotEmpty(email)) {
        startElement('BuyerCommunicationDetails');
        textElementIfNotEmpty('BuyerPhoneNumberIdentifier', clip(phone, 35));
        textElementIfNotEmpty('BuyerEmailaddressIdentifier', clip(email, 70));
        endElement('BuyerCommunicationDetails');
    }

    // Goods go to the buyer's address: there is no delivery address of its own.
    if (isNotEmpty(street) && isNotEmpty(town) && isNotEmpty(postCode)) {
        startElement('DeliveryPartyDetails');
        textElement('DeliveryOrganisationName', clip(name, 35));
        writeAddress('Delivery', 'DeliveryPostalAddressDetails', street, town, postCode, country);
        endElement('DeliveryPartyDetails');
    }

    var hasDate = get('invoice/hasDeliveryDate');
    var method = text('invoice/delivery');
    if (hasDate || isNotEmpty(method)) {
        startElement('DeliveryDetails');
        if (hasDate)
            date('DeliveryDate', 'invoice/deliveryDate');
        textElementIfNotEmpty('DeliveryMethodText', clip(method, 512));
        endElement('DeliveryDetails');
    }
}

function vatCode(percentPath) {
    return get(percentPath) > 0 ? 'S' : 'Z';
}

function writeInvoiceDetails(type) {
    var referenceLength = version.major >= 3 ? 70 : 35;
    startElement('InvoiceDetails');
    textElement('InvoiceTypeCode', TYPES[type].code);
    if (version.major >= 3)
        textElementIfNotEmpty('InvoiceTypeCodeUN', TYPES[type].un);
    textElement('InvoiceTypeText', TYPES[type].text);
    textElement('OriginCode', 'Original');
    textElement('InvoiceNumber', text('invoice/number'));
    date('InvoiceDate', 'invoice/date');
    textElementIfNotEmpty('SellerReferenceIdentifier',
        clip(text('invoice/sellerRef'), referenceLength));
    textElementIfNotEmpty('BuyerReferenceIdentifier',
        clip(text('invoice/buyerRef'), referenceLength));
    if (version.major >= 3)
        amount('RowsTotalVatExcludedAmount', 'invoice/totalAmountVatExcluded');
    amount('InvoiceTotalVatExcludedAmount', 'invoice/totalAmountVatExcluded');
    amount('InvoiceTotalVatAmount', 'invoice/totalVatAmount');
    amount('InvoiceTotalVatIncludedAmount', 'invoice/totalAmount');

    var rates = get('invoice/vat/length');
    for (var i = 0; i < rates; i++) {
        var vat = 'invoice/vat/' + i + '/';
        startElement('VatSpecificationDetails');
        amount('VatBaseAmount', vat + 'amountVatExcluded');
        textElement('VatRatePercent', getNumber(vat + 'percent'));
        if (version.major >= 3)
            textElement('VatCode', vatCode(vat + 'percent'));
        amount('VatRateAmount', vat + 'vatAmount');
        endElement('VatSpecificationDetails');
    }
    textElementIfNotEmpty('InvoiceFreeText', clip(text('invoice/noticeText1'), 512));

    startElement('PaymentTermsDetails');
    var terms = text('invoice/paymentTerms');
    // Version 1.3 requires the text.
    if (!isNotEmpty(terms) && version.major < 2)
        terms = 'Eräpäivä ' + getDateTime('invoice/dueDate', 'd.M.yyyy');
    textElementIfNotEmpty('PaymentTermsFreeText', clip(terms, version.major >= 2 ? 70 : 35));
    date('InvoiceDueDate', 'invoice/dueDate');
    startElement('PaymentOverDueFineDetails');
    textElement('PaymentOverDueFineFreeText', 'Viivästyskorko');
    textElement('PaymentOverDueFinePercent', getNumber('invoice/interestOnArrears'));
    endElement('PaymentOverDueFineDetails');
    endElement('PaymentTermsDetails');
    endElement('InvoiceDetails');
}

function writePaymentStatus(type) {
    var balance = get('invoice/balance');
    var status = 'PARTLYPAID';
    if (type === RECEIPT || balance === 0)
        status = 'PAID';
    else if (balance === get('invoice/totalAmount'))
        status = 'NOTPAID';
    startElement('PaymentStatusDetails');
    textElement('PaymentStatusCode', status);
    endElement('PaymentStatusDetails');
}

function writeRow(index) {
    var row = 'invoice/items/' + index + '/';
    var unit = text(row + 'unitCode');
    startElement('InvoiceRow');
    textElementIfNotEmpty('ArticleIdentifier',
        clip(text(row + 'productNumber'), version.major >= 3 ? 70 : 35));
    textElementIfNotEmpty('ArticleName', clip(text(row + 'productName'), 100));
    // A row of quantity 0 only carries its text.
    var described = get(row + 'quantity') === 0;
    if (!described) {
        startElement('InvoicedQuantity');
        attributeIfNotEmpty('QuantityUnitCode', clip(unit, 14));
        if (version.major >= 3 && UNIT_CODES.hasOwnProperty(unit.toLowerCase()))
            attribute('QuantityUnitCodeUN', UNIT_CODES[unit.toLowerCase()]);
        characters(getNumber(row + 'quantity'));
        endElement('InvoicedQuantity');
        startElement('UnitPriceAmount');
        attribute('AmountCurrencyIdentifier', CURRENCY);
        characters(getNumber(row + 'amountVatExcluded', 2));
        endElement('UnitPriceAmount');
    }
    textElement('RowPositionIdentifier', String(index + 1));
    textElementIfNotEmpty('RowFreeText', clip(text(row + 'text'), 512));
    if (described) {
        endElement('InvoiceRow');
        return;
    }
    if (get(row + 'discountPercent') !== 0)
        textElement('RowDiscountPercent', getNumber(row + 'discountPercent'));
    textElement('RowVatRatePercent', getNumber(row + 'vatRate'));
    if (version.major >= 3)
        textElement('RowVatCode', vatCode(row + 'vatRate'));
    amount('RowVatAmount', row + 'totalVatAmount');
    amount('RowVatExcludedAmount', row + 'totalAmountVatExcluded');
    amount('RowAmount', row + 'totalAmount');
    endElement('InvoiceRow');
}

function writeEpiDetails(type) {
    var account = 'seller/bankAccounts/0/';
    var bic = text(account + 'bic');
    var reference = text('invoice/referenceNumberRaw').replace(/\s/g, '');

    startElement('EpiDetails');
    startElement('EpiIdentificationDetails');
    date('EpiDate', 'invoice/date');
    textElement('EpiReference', '');
    endElement('EpiIdentificationDetails');

    startElement('EpiPartyDetails');
    startElement('EpiBfiPartyDetails');
    if (isNotEmpty(bic)) {
        startElement('EpiBfiIdentifier');
        attribute('IdentificationSchemeName', 'BIC');
        characters(bic);
        endElement('EpiBfiIdentifier');
    }
    endElement('EpiBfiPartyDetails');
    startElement('EpiBeneficiaryPartyDetails');
    textElement('EpiNameAddressDetails', clip(text('seller/name'), 35));
    startElement('EpiAccountID');
    attribute('IdentificationSchemeName', 'IBAN');
    characters(text(account + 'ibanRaw').replace(/\s/g, ''));
    endElement('EpiAccountID');
    endElement('EpiBeneficiaryPartyDetails');
    endElement('EpiPartyDetails');

    startElement('EpiPaymentInstructionDetails');
    textElementIfNotEmpty('EpiPaymentInstructionId', text('settings/epiPaymentInstructionId'));
    if (isNotEmpty(reference)) {
        startElement('EpiRemittanceInfoIdentifier');
        attribute('IdentificationSchemeName', reference.indexOf('RF') === 0 ? 'ISO' : 'SPY');
        characters(reference);
        endElement('EpiRemittanceInfoIdentifier');
    }
    // Nothing is left to pay on a receipt or a delivery note.
    if (type === RECEIPT || type === DELIVERY_NOTE)
        amountText('EpiInstructedAmount', ZERO_AMOUNT);
    else
        amount('EpiInstructedAmount', 'invoice/balance');
    startElement('EpiCharge');
    attribute('ChargeOption', 'SLEV');
    endElement('EpiCharge');
    date('EpiDateOptionDate', 'invoice/dueDate');
    endElement('EpiPaymentInstructionDetails');
    endElement('EpiDetails');
}

function write() {
    version.major = parseInt(get('xmlSchemaVersion/major'), 10);
    var type = get('invoice/type');
    if (!(type >= 0 && type < TYPES.length))
        type = 0;
    // Every Finvoice version requires the account the invoice is paid to.
    if (!(get('seller/bankAccounts/length') > 0))
        throw new Error('lasku ' + text('invoice/number') + ': myyjällä ei ole näkyvää ' +
            'pankkitiliä, ja Finvoice-lasku vaatii maksajalle tilinumeron (EpiAccountID)');

    processingInstruction('xml-stylesheet', 'type="text/xsl" href="Finvoice.xsl"');
    startElement('Finvoice');
    attribute('Version', get('xmlSchemaVersion'));
    attribute('xmlns:xsi', 'http://www.w3.org/2001/XMLSchema-instance');
    attribute('xsi:noNamespaceSchemaLocation', 'Finvoice.xsd');
    if (version.major >= 2)
        writeMessageTransmissionDetails();
    writeSeller();
    writeBuyer();
    writeInvoiceDetails(type);
    writePaymentStatus(type);
    var rows = get('invoice/items/length');
    for (var i = 0; i < rows; i++)
        writeRow(i);
    writeEpiDetails(type);
    endElement('Finvoice');
}
