# Data in code, references to other sections and symbols, and a section of code with no label.
	.text
	.globl entry
entry:
	entsp 2
	ldw r0, dp[counter]
	ldaw r11, cp[table]
	ldap r11, message
	bl external
	bt r0, skip
	.short 0xffff
	.word entry
skip:
	ldw r1, sp[1]
	retsp 2
	.byte 0x7f

	.section .text.other, "ax", @progbits
	bu entry
	add r1, r2, 0
	add r0, r0, 0

	.section .dp.data, "awd", @progbits
counter:
	.word 0
	.section .cp.rodata, "ac", @progbits
table:
	.word 1, 2
message:
	.asciiz "hi"
