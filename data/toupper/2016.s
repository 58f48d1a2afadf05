# The upper case of IBM437.
#
# Made by data/toupper/generate.cc: the simple upper case of Unicode, from
# GLib, for the characters that iconv reads as CP437.
# These stay as they are, since the set does not have their upper case:
# \x83 \x85 \x88 \x89 \x8A \x8B \x8C \x8D \x93 \x95 \x96 \x97 \x98
# \x9F \xA0 \xA1 \xA2 \xA3 \xE0 \xE1 \xE3 \xE6 \xE7 \xEB \xEE

TOUPPER CHARSET IBM437

a=A b=B c=C d=D e=E f=F g=G h=H i=I j=J k=K l=L m=M n=N o=O p=P q=Q r=R s=S
t=T u=U v=V w=W x=X y=Y z=Z \x81=\x9A \x82=\x90 \x84=\x8E \x86=\x8F
\x87=\x80 \x91=\x92 \x94=\x99 \xA4=\xA5 \xE5=\xE4 \xED=\xE8
