import QtQuick
import SlatewiseViews

// The first few sentences of what came out of a batch.
OutcomeColumn {
    id: list

    required property OutcomeListModel lines

    Repeater {
        model: list.lines

        OutcomeText {}
    }
}
