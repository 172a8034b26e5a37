import SlatewiseViews

// Takes something away. A double click takes away one thing, and not the next as well.
ActionButton {
    kind: ActionButton.Destructive
    onDoubleClicked: {}
}
