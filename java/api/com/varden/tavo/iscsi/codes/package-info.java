/**
 * What the numbers mean that the model classes and the statuses carry: one class for each kind of number, with its
 * constants and its table of meanings.
 *
 * The meanings are those of the management libraries that come with this bridge. The library of another maker may use
 * other numbers, or mean something else by the same ones: what stands in no table is shown in hexadecimal.
 */
package com.varden.tavo.iscsi.codes;
