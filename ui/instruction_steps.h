#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace brivanta {

// The four steps of InstructionsView, shown verbatim, and the numbered symbol of each row.
class InstructionSteps : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(int count READ count CONSTANT)

public:
    using QObject::QObject;

    static int count();
    // Step `index`; an index outside 0 to 3 is fatal.
    Q_INVOKABLE static QString text(int index);
    // "1.circle.fill" for index 0, up to "4.circle.fill"; the addition is overflow-checked.
    Q_INVOKABLE static QString symbol(int index);
};

} // namespace brivanta
