// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <random>
#include <vector>

/// Makes up preset records that repeat keys and hold values of the wrong types. The writers of the program
/// can do neither, so that the bytes are put together here.
class RandomRecords
{
public:
    /// The same seed makes up the same.
    explicit RandomRecords(unsigned seed);

    /// What was made up, as XML and in the binary format.
    struct Document
    {
        QByteArray xml;
        QByteArray binary;
    };
    Document domain();
    /// A preset file that holds its record as it is, without classes.
    Document bareArchive();
    /// A preset file as it is written, each value by its number.
    Document archive();

    struct Node
    {
        enum class Kind { Scalar, Array, Dictionary };

        Kind kind = Kind::Scalar;
        /// Of a scalar: how it is written in both formats.
        QByteArray xml = {};
        QByteArray binary = {};
        std::vector<Node> values = {};
        /// Of a dictionary: for each value.
        std::vector<QByteArray> keys = {};
    };

private:
    unsigned pick(unsigned count) { return unsigned(random_()) % count; }
    Node record();
    Node item(unsigned depth);
    Node items(unsigned depth);
    Node value(unsigned depth);

    std::mt19937 random_;
};
