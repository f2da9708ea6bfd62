"""The driver once more, as plain as can be: every document built anew, nothing kept that can be asked for."""
