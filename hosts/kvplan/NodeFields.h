#pragma once

#include <model/KvPlanNode.h>

#include <QtCore/QJsonValue>
#include <QtCore/QVector>

/// A field of a plan node, by the name that programs and people know it by.
struct NodeField
{
    /// How a person writes the value.
    enum Form
    {
        Text,
        WholeNumber,
        Percentage,
        Flag,
        Date,
        List,
        Json
    };

    QLatin1String name;
    Form form;
    /// Why nobody can change it, as in "the service tells it"; null for one that can be changed.
    const char* fixed;
    /// The value as programs get it: null for a date that is not set.
    QJsonValue (*value)(const KvPlanNode& node);
    /// Takes a value in the form that value() gives. @return false, with the node unchanged, when it is none.
    bool (*setValue)(KvPlanNode& node, const QJsonValue& json);
    /// Whether the library sends the value: an empty text and a negative number it leaves out in some fields,
    /// and the service then keeps what it had.
    bool (*isSent)(const KvPlanNode& node);

    /// What a value has to be, as in "a whole number".
    QString expectation() const;

    /// What a person wrote as the value that setValue() takes; undefined when it cannot be read.
    QJsonValue read(const QString& text) const;

    /// A value for a person, on one line; "–" for what is not set.
    QString shown(const QJsonValue& json) const;
};

/// All fields in the order of the record, without the reserved ones and the children.
const QVector<NodeField>& nodeFields();

/// The field of that name; null when there is none.
const NodeField* nodeField(const QString& name);

/// For behind a name that no field has: " (did you mean \"name\"?)", or nothing when none is like it.
QString adviceOnField(const QString& name);
