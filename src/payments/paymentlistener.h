#ifndef PAYMENTLISTENER_H
#define PAYMENTLISTENER_H

// Receives what a payment file reader finds. The listener reads the details
// (account, dates, amount, reference) from the reader's accessors.
class PaymentListener
{
public:
    virtual ~PaymentListener() = default;
    // The file's account is known: iban() or bban() of the reader.
    virtual void accountRead() = 0;
    // One more payment: entryDate(), paymentDate(), amount(), referenceNumber().
    virtual void paymentRead() = 0;
};

#endif // PAYMENTLISTENER_H
