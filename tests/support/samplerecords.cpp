#include "samplerecords.h"
#include "domain/bankaccount.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/invoiceitem.h"
#include "domain/payment.h"
#include "domain/product.h"
#include "domain/settings.h"

BankAccount SampleRecords::bankAccount()
{
    BankAccount a;
    a.name = QStringLiteral("Pankki Oyj");
    a.shortName = QStringLiteral("Pankki");
    a.iban = QStringLiteral("FI2112345600000785");
    a.bic = QStringLiteral("NDEAFIHH");
    a.rowNumber = 3;
    a.visible = false;
    a.deleted = true;
    return a;
}

Customer SampleRecords::customer()
{
    Customer c;
    c.number = 1001;
    c.name = QStringLiteral("Äijälä & Poika Ky");
    c.streetName = QStringLiteral("Kauppakatu 1 B 2");
    c.postCode = QStringLiteral("00100");
    c.townName = QStringLiteral("Helsinki");
    c.country = QStringLiteral("Suomi");
    c.contact = QStringLiteral("Maija");
    c.vatNumber = QStringLiteral("FI01120389");
    c.referenceNumber = QStringLiteral("1232");
    c.emailAddress = QStringLiteral("maija@example.com");
    c.phoneNumber = QStringLiteral("040 123 4567");
    c.paymentTerms = QStringLiteral("7 päivää netto");
    c.deleted = true;
    c.setProperty(QStringLiteral("e2"), QStringLiteral("003712345678"));
    c.setProperty(QStringLiteral("c1"), QStringLiteral("rivi 1\nrivi 2 \\ loppu"));
    return c;
}

Invoice SampleRecords::invoice(int customerId)
{
    Invoice i;
    i.customerId = customerId;
    i.type = 2;
    i.number = 1234;
    i.date = QDate(2025, 1, 2);
    i.paymentTerms = QStringLiteral("14 päivää netto");
    i.delivery = QStringLiteral("Nouto");
    i.deliveryDate = QDate(2024, 12, 31);
    i.buyerRef = QStringLiteral("Tilaus 5");
    i.sellerRef = QStringLiteral("Myyjä");
    i.interestOnArrears = 1150;
    i.dueDate = QDate(2025, 1, 16);
    i.referenceNumber = QStringLiteral("12344");
    i.totalAmount = 2147483647;
    i.balance = -2147483647;
    i.setProperty(QStringLiteral("t1"), QStringLiteral("Huomio:\nrivi"));
    i.setProperty(QStringLiteral("attributes/Projekti"), QStringLiteral("P-1"));
    return i;
}

InvoiceItem SampleRecords::invoiceItem(int invoiceId)
{
    InvoiceItem r;
    r.invoiceId = invoiceId;
    r.productNumber = QStringLiteral("P1");
    r.productName = QStringLiteral("Työ");
    r.quantity = Q_INT64_C(3000000000);
    r.unitCode = QStringLiteral("h");
    r.amount = Q_INT64_C(-9876543210123);
    r.vatRate = 2550;
    r.vatExcluded = true;
    r.discount = 1000;
    r.text = QStringLiteral("Rivi\nkaksi \\");
    r.rowNumber = 4;
    return r;
}

Payment SampleRecords::payment(int invoiceId, int bankAccountId)
{
    Payment p;
    p.invoiceId = invoiceId;
    p.date = QDate(2024, 2, 1);
    p.bankAccountId = bankAccountId;
    p.amount = -200;
    return p;
}

Product SampleRecords::product()
{
    Product p;
    p.number = QStringLiteral("A-10");
    p.name = QStringLiteral("Työkalu");
    p.unitCode = QStringLiteral("kpl");
    p.amount = Q_INT64_C(5000000000123);
    p.vatRate = 2550;
    p.vatExcluded = true;
    p.category = QStringLiteral("Työkalut");
    return p;
}

Settings SampleRecords::settings()
{
    Settings s;
    s.sellerName = QStringLiteral("Yritys Oy");
    s.sellerStreetName = QStringLiteral("Tie 1");
    s.sellerPostCode = QStringLiteral("33100");
    s.sellerTownName = QStringLiteral("Tampere");
    s.sellerCountry = QStringLiteral("Suomi");
    s.sellerBusinessId = QStringLiteral("2617416-4");
    for (int i = 0; i < 256; ++i)
        s.sellerLogo.append(char(i));
    s.sellerLogo.append(QByteArray("\0\\'\"x", 5));
    s.setProperty(QStringLiteral("finvoice/senderId"), QStringLiteral("0037"));
    return s;
}
